#include "RequestHandler.h"

#include "Engine.h"
#include "FaultPlan.h"
#include "Log.h"
#include "Messages.h"

#include <algorithm>

namespace velmo {
namespace kvo {
namespace sim {

RequestHandler::RequestHandler(Engine& engine, const FaultPlan& faults, const Log& log)
    : _engine(engine), _faults(faults), _log(log)
{
}

Delivery RequestHandler::handle(std::uint64_t client, const std::string& message, Clock::time_point now)
{
    std::uint64_t number = ++_requests;
    std::string prefix = "client " + std::to_string(client) + " request " + std::to_string(number) + ": ";
    Delivery delivery;
    delivery.due = now;

    Request request;
    std::string reason;
    if (!parseRequest(message, request, reason)) {
        _log.verbose(prefix + "bad request (" + reason + "), closing");
        delivery.closeAfter = true;
        return delivery;
    }
    _log.verbose(prefix + requestTag(request.command) +
                 (request.command == Command::SetAudioDelay ? " " + std::to_string(request.delayMs) : ""));

    const Fault* fault = _faults.find(number);
    Reply reply;
    if (fault != nullptr && fault->action == Fault::Action::Error) {
        reply.command = request.command;
        reply.code = fault->code;
        reply.message = fault->text;
    } else {
        reply = _engine.handle(request);
    }
    std::string version =
        fault != nullptr && fault->action == Fault::Action::Version ? fault->text : protocolVersion;
    std::string answer = framed(reply.unreadable ? garbageText : answerDocument(reply, version));
    delivery.bytes = answer;
    delivery.logLine = prefix + (reply.unreadable ? "garbage (lost poll) instead of " : "") +
                       answerTag(reply.command) + " " + std::to_string(reply.code);
    if (fault == nullptr) {
        return delivery;
    }

    std::string because = " (fault " + fault->rule + ")";
    delivery.logLine += because;
    switch (fault->action) {
    case Fault::Action::Close:
        delivery.bytes.clear();
        delivery.closeAfter = true;
        delivery.logLine = prefix + "closing instead of answering" + because;
        break;
    case Fault::Action::CloseAfter:
        delivery.bytes.resize(std::min(fault->bytes, answer.size()));
        delivery.closeAfter = true;
        delivery.logLine += ", closing after " + std::to_string(delivery.bytes.size()) + " bytes";
        break;
    case Fault::Action::Split:
        delivery.writeSize = fault->bytes;
        delivery.pause = fault->wait;
        break;
    case Fault::Action::Double:
        delivery.bytes += answer;
        break;
    case Fault::Action::Garbage:
        delivery.bytes = framed(garbageText);
        delivery.logLine = prefix + "garbage instead of " + answerTag(reply.command) + because;
        break;
    case Fault::Action::Delay:
        delivery.due = now + fault->wait;
        break;
    case Fault::Action::Version:
    case Fault::Action::Error:
        break;
    }
    return delivery;
}

} // namespace sim
} // namespace kvo
} // namespace velmo
