// The native methods of velmo.kvo.lipsyncapi.SyncController and SyncRunner,
// over the C interface. A SyncRunner's native runner reaches the engine
// through the Java runner's engine* methods, which call its LipSyncService:
// so the runner's calls are the service's, with its deadline and its
// lifetime checks, and the polling logic stays the library's.
#include "JavaErrors.h"
#include "velmo/kvo/lipsyncapi/akvo_lipsync_sync.h"

#include <jni.h>

#include <algorithm>
#include <cstdint>
#include <new>
#include <vector>

namespace {

void throwOutOfMemory(JNIEnv* env)
{
    velmo::kvo::jni::throwOutOfMemory(env, "No memory for the lip-sync controller");
}

// A failed sync call can only be memory that ran out: the arguments are the binding's own.
bool succeeded(JNIEnv* env, int32_t code)
{
    if (code != AKVO_LIPSYNC_SUCCESS) {
        throwOutOfMemory(env);
    }
    return code == AKVO_LIPSYNC_SUCCESS;
}

akvo_lipsync_sync_controller* controllerOf(jlong handle)
{
    return reinterpret_cast<akvo_lipsync_sync_controller*>(static_cast<intptr_t>(handle));
}

// The decision as SyncDecision reads it: five whole numbers, three fractional.
void copyDecision(const akvo_lipsync_sync_decision& decision, jlong* whole, jdouble* fraction)
{
    whole[0] = decision.margin_ms;
    whole[1] = decision.apply_margin;
    whole[2] = decision.state;
    whole[3] = decision.infeasible;
    whole[4] = decision.events;
    fraction[0] = decision.video_delay_ms;
    fraction[1] = decision.skew_ms;
    fraction[2] = decision.uncorrected_skew_ms;
}

void writeResponse(JNIEnv* env, const akvo_lipsync_sync_margin_response& response, jdoubleArray values)
{
    const jdouble copied[] = {response.gain, response.lag_ms, static_cast<jdouble>(response.changes_seen)};
    env->SetDoubleArrayRegion(values, 0, 3, copied);
}

// A SyncRunner's native runner and what its calls need of the poll in progress.
struct JavaRunner
{
    akvo_lipsync_sync_runner* runner = nullptr;
    jmethodID isConnected = nullptr;
    jmethodID connect = nullptr;
    jmethodID disconnect = nullptr;
    jmethodID getAudioTimestamps = nullptr;
    jmethodID setAudioDelayMargin = nullptr;
    // Set for the time of one poll.
    JNIEnv* env = nullptr;
    jobject self = nullptr;
    // A Java exception is pending: no more Java is called in this poll, and the calls fail.
    bool thrown = false;

    template <class Call>
    jint call(Call javaCall)
    {
        if (thrown) {
            return AKVO_LIPSYNC_UNKNOWN_ERROR;
        }
        const jint result = javaCall();
        thrown = env->ExceptionCheck() == JNI_TRUE;
        return thrown ? AKVO_LIPSYNC_UNKNOWN_ERROR : result;
    }
};

JavaRunner& javaRunnerOf(void* context)
{
    return *static_cast<JavaRunner*>(context);
}

JavaRunner* javaRunnerOf(jlong handle)
{
    return reinterpret_cast<JavaRunner*>(static_cast<intptr_t>(handle));
}

const akvo_lipsync_sync_calls javaCalls = {
    nullptr,
    [](void* context) {
        JavaRunner& java = javaRunnerOf(context);
        const jint connected =
            java.call([&] { return java.env->CallBooleanMethod(java.self, java.isConnected) == JNI_TRUE; });
        // After an exception the service counts as disconnected, and the calls that follow fail at once.
        return connected == 1 ? 1 : 0;
    },
    [](void* context) {
        JavaRunner& java = javaRunnerOf(context);
        return java.call([&] { return java.env->CallIntMethod(java.self, java.connect); });
    },
    [](void* context) {
        JavaRunner& java = javaRunnerOf(context);
        return java.call([&] { return java.env->CallIntMethod(java.self, java.disconnect); });
    },
    [](void* context, akvo_lipsync_timestamps* timestamps) {
        JavaRunner& java = javaRunnerOf(context);
        JNIEnv* env = java.env;
        return java.call([&]() -> jint {
            const jlongArray values = env->NewLongArray(4);
            if (values == nullptr) {
                return AKVO_LIPSYNC_UNKNOWN_ERROR;
            }
            const jint code = env->CallIntMethod(java.self, java.getAudioTimestamps, values);
            jlong copied[4] = {0, 0, 0, 0};
            if (code == AKVO_LIPSYNC_SUCCESS && env->ExceptionCheck() == JNI_FALSE) {
                env->GetLongArrayRegion(values, 0, 4, copied);
                *timestamps = {static_cast<uint64_t>(copied[0]), static_cast<uint64_t>(copied[1]),
                               static_cast<uint64_t>(copied[2]), static_cast<uint64_t>(copied[3])};
            }
            env->DeleteLocalRef(values);
            return code;
        });
    },
    [](void* context, uint64_t delayMs) {
        JavaRunner& java = javaRunnerOf(context);
        return java.call([&] {
            return java.env->CallIntMethod(java.self, java.setAudioDelayMargin, static_cast<jlong>(delayMs));
        });
    }};

} // namespace

extern "C" {

JNIEXPORT jlong JNICALL Java_velmo_kvo_lipsyncapi_SyncController_nativeCreate(JNIEnv*, jclass,
                                                                              jlong pollIntervalMs)
{
    return static_cast<jlong>(reinterpret_cast<intptr_t>(
        akvo_lipsync_sync_controller_create(static_cast<uint32_t>(pollIntervalMs))));
}

JNIEXPORT void JNICALL Java_velmo_kvo_lipsyncapi_SyncController_nativeDestroy(JNIEnv*, jclass,
                                                                              jlong controller)
{
    akvo_lipsync_sync_controller_destroy(controllerOf(controller));
}

JNIEXPORT void JNICALL Java_velmo_kvo_lipsyncapi_SyncController_nativeUpdate(
    JNIEnv* env, jobject, jlong controller, jlong nowMs, jboolean audioValid, jlong audioCapture,
    jlong audioRendering, jboolean videoValid, jlong videoCapture, jlong videoRendering, jlongArray whole,
    jdoubleArray fraction)
{
    const akvo_lipsync_sync_poll poll = {
        nowMs,
        audioValid == JNI_TRUE,
        {static_cast<uint64_t>(audioCapture), static_cast<uint64_t>(audioRendering), 0, 0},
        videoValid == JNI_TRUE,
        {static_cast<uint64_t>(videoCapture), static_cast<uint64_t>(videoRendering)}};
    akvo_lipsync_sync_decision decision;
    if (succeeded(env, akvo_lipsync_sync_controller_update(controllerOf(controller), &poll, &decision))) {
        jlong wholeNumbers[5];
        jdouble fractions[3];
        copyDecision(decision, wholeNumbers, fractions);
        env->SetLongArrayRegion(whole, 0, 5, wholeNumbers);
        env->SetDoubleArrayRegion(fraction, 0, 3, fractions);
    }
}

JNIEXPORT void JNICALL Java_velmo_kvo_lipsyncapi_SyncController_nativeMarginApplied(
    JNIEnv* env, jobject, jlong controller, jlong nowMs, jint marginMs, jboolean accepted)
{
    succeeded(env, akvo_lipsync_sync_controller_margin_applied(controllerOf(controller), nowMs,
                                                               static_cast<uint32_t>(marginMs),
                                                               accepted == JNI_TRUE));
}

JNIEXPORT void JNICALL Java_velmo_kvo_lipsyncapi_SyncController_nativeReconnected(JNIEnv* env, jobject,
                                                                                  jlong controller)
{
    succeeded(env, akvo_lipsync_sync_controller_reconnected(controllerOf(controller)));
}

JNIEXPORT void JNICALL Java_velmo_kvo_lipsyncapi_SyncController_nativeMarginResponse(JNIEnv* env, jobject,
                                                                                     jlong controller,
                                                                                     jdoubleArray values)
{
    akvo_lipsync_sync_margin_response response;
    if (succeeded(env, akvo_lipsync_sync_controller_margin_response(controllerOf(controller), &response))) {
        writeResponse(env, response, values);
    }
}

JNIEXPORT jlong JNICALL Java_velmo_kvo_lipsyncapi_SyncRunner_nativeCreate(JNIEnv* env, jclass runnerClass,
                                                                          jlong pollIntervalMs)
{
    JavaRunner* java = new (std::nothrow) JavaRunner;
    if (java == nullptr) {
        return 0;
    }
    java->isConnected = env->GetMethodID(runnerClass, "engineIsConnected", "()Z");
    java->connect = env->GetMethodID(runnerClass, "engineConnect", "()I");
    java->disconnect = env->GetMethodID(runnerClass, "engineDisconnect", "()I");
    java->getAudioTimestamps = env->GetMethodID(runnerClass, "engineGetAudioTimestamps", "([J)I");
    java->setAudioDelayMargin = env->GetMethodID(runnerClass, "engineSetAudioDelayMargin", "(J)I");
    akvo_lipsync_sync_calls calls = javaCalls;
    calls.context = java;
    java->runner = env->ExceptionCheck() == JNI_FALSE
                       ? akvo_lipsync_sync_runner_create_over(&calls, static_cast<uint32_t>(pollIntervalMs))
                       : nullptr;
    if (java->runner == nullptr) {
        delete java;
        return 0;
    }
    return static_cast<jlong>(reinterpret_cast<intptr_t>(java));
}

JNIEXPORT void JNICALL Java_velmo_kvo_lipsyncapi_SyncRunner_nativeDestroy(JNIEnv*, jclass, jlong runner)
{
    JavaRunner* java = javaRunnerOf(runner);
    if (java != nullptr) {
        akvo_lipsync_sync_runner_destroy(java->runner);
        delete java;
    }
}

JNIEXPORT void JNICALL Java_velmo_kvo_lipsyncapi_SyncRunner_nativePoll(
    JNIEnv* env, jobject self, jlong runner, jlong nowMs, jboolean videoValid, jlong videoCapture,
    jlong videoRendering, jlongArray whole, jdoubleArray fraction)
{
    JavaRunner& java = *javaRunnerOf(runner);
    java.env = env;
    java.self = self;
    java.thrown = false;
    const akvo_lipsync_sync_video video = {static_cast<uint64_t>(videoCapture),
                                           static_cast<uint64_t>(videoRendering)};
    akvo_lipsync_sync_report report;
    const int32_t code =
        akvo_lipsync_sync_runner_poll(java.runner, nowMs, videoValid == JNI_TRUE ? &video : nullptr, &report);
    java.env = nullptr;
    java.self = nullptr;
    // The exception that ended the poll goes to the caller as it is.
    if (java.thrown || !succeeded(env, code)) {
        return;
    }
    jlong wholeNumbers[12];
    jdouble fractions[3];
    copyDecision(report.decision, wholeNumbers, fractions);
    const jlong rest[] = {report.connected,
                          report.timestamps_code,
                          report.margin_code,
                          static_cast<jlong>(report.audio.capture),
                          static_cast<jlong>(report.audio.rendering),
                          static_cast<jlong>(report.audio.receiving),
                          static_cast<jlong>(report.audio.jitter_buffer_depth)};
    std::copy(rest, rest + 7, wholeNumbers + 5);
    env->SetLongArrayRegion(whole, 0, 12, wholeNumbers);
    env->SetDoubleArrayRegion(fraction, 0, 3, fractions);
}

// Null, with an OutOfMemoryError pending, when there is no room for the text.
JNIEXPORT jbyteArray JNICALL Java_velmo_kvo_lipsyncapi_SyncRunner_nativeLastFailure(JNIEnv* env, jobject,
                                                                                    jlong runner)
{
    const akvo_lipsync_sync_runner* native = javaRunnerOf(runner)->runner;
    return velmo::kvo::jni::textAsBytes(env, [native](char* buffer, size_t size) {
        return akvo_lipsync_sync_runner_last_failure(native, buffer, size);
    });
}

JNIEXPORT void JNICALL Java_velmo_kvo_lipsyncapi_SyncRunner_nativeMarginResponse(JNIEnv* env, jobject,
                                                                                 jlong runner,
                                                                                 jdoubleArray values)
{
    akvo_lipsync_sync_margin_response response;
    if (succeeded(env, akvo_lipsync_sync_runner_margin_response(javaRunnerOf(runner)->runner, &response))) {
        writeResponse(env, response, values);
    }
}

} // extern "C"
