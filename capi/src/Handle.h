#ifndef VELMO_KVO_LIPSYNCAPI_HANDLE_H
#define VELMO_KVO_LIPSYNCAPI_HANDLE_H

#include "Connection.h"
#include "Turn.h"
#include "velmo/kvo/lipsyncapi/Service.h"

#include <atomic>
#include <cstdint>

// What an akvo_lipsync_service handle points to.
struct akvo_lipsync_service
{
    velmo::kvo::lipsyncapi::Turn turn;
    std::atomic<uint32_t> deadlineMs{0};
    velmo::kvo::lipsyncapi::Service service;
    velmo::kvo::lipsyncapi::Connection connection;
    // The process's list of live handles (Process).
    akvo_lipsync_service* previous = nullptr;
    akvo_lipsync_service* next = nullptr;
};

#endif
