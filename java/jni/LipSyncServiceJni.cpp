// The native methods of velmo.kvo.lipsyncapi.LipSyncService, over the C
// interface. Codes go back as they are; the Java side turns failures into
// exceptions and reads the text, as bytes, since a text from the engine need
// not be the JVM's modified UTF-8. The methods that use a handle are instance
// methods: the JNI frame holds the service object, so it cannot become
// unreachable, and its handle freed, while the call runs.
#include "JavaErrors.h"
#include "velmo/kvo/lipsyncapi/akvo_lipsync.h"

#include <jni.h>

#include <cstdint>
#include <new>
#include <string>
#include <vector>

namespace {

akvo_lipsync_service* serviceOf(jlong handle)
{
    return reinterpret_cast<akvo_lipsync_service*>(static_cast<intptr_t>(handle));
}

jlong toJava(uint64_t value)
{
    return static_cast<jlong>(value);
}

uint64_t fromJava(jlong value)
{
    return static_cast<uint64_t>(value);
}

jint throwOutOfMemory(JNIEnv* env)
{
    return velmo::kvo::jni::throwOutOfMemory(env, "No memory for the lip-sync call");
}

} // namespace

extern "C" {

JNIEXPORT jlong JNICALL Java_velmo_kvo_lipsyncapi_LipSyncService_nativeCreate(JNIEnv*, jclass)
{
    return static_cast<jlong>(reinterpret_cast<intptr_t>(akvo_lipsync_create()));
}

JNIEXPORT void JNICALL Java_velmo_kvo_lipsyncapi_LipSyncService_nativeDestroy(JNIEnv*, jclass, jlong service)
{
    akvo_lipsync_destroy(serviceOf(service));
}

JNIEXPORT void JNICALL Java_velmo_kvo_lipsyncapi_LipSyncService_nativeSetDeadline(JNIEnv*, jobject,
                                                                                  jlong service,
                                                                                  jlong milliseconds)
{
    akvo_lipsync_set_deadline(serviceOf(service), static_cast<uint32_t>(milliseconds));
}

JNIEXPORT jint JNICALL Java_velmo_kvo_lipsyncapi_LipSyncService_nativeConnect(JNIEnv* env, jobject,
                                                                              jlong service,
                                                                              jbyteArray socketName)
{
    try {
        const jsize length = env->GetArrayLength(socketName);
        std::string name(static_cast<size_t>(length), '\0');
        env->GetByteArrayRegion(socketName, 0, length, reinterpret_cast<jbyte*>(&name[0]));
        return akvo_lipsync_connect(serviceOf(service), name.c_str());
    } catch (const std::bad_alloc&) {
        return throwOutOfMemory(env);
    }
}

JNIEXPORT jint JNICALL Java_velmo_kvo_lipsyncapi_LipSyncService_nativeDisconnect(JNIEnv*, jobject,
                                                                                 jlong service)
{
    return akvo_lipsync_disconnect(serviceOf(service));
}

JNIEXPORT jboolean JNICALL Java_velmo_kvo_lipsyncapi_LipSyncService_nativeIsConnected(JNIEnv*, jobject,
                                                                                      jlong service)
{
    return akvo_lipsync_is_connected(serviceOf(service)) != 0 ? JNI_TRUE : JNI_FALSE;
}

JNIEXPORT jint JNICALL Java_velmo_kvo_lipsyncapi_LipSyncService_nativeGetCapabilities(JNIEnv* env, jobject,
                                                                                      jlong service,
                                                                                      jlongArray values)
{
    uint64_t granularity = 0;
    uint64_t maximum = 0;
    const int32_t code = akvo_lipsync_get_capabilities(serviceOf(service), &granularity, &maximum);
    const jlong copied[] = {toJava(granularity), toJava(maximum)};
    env->SetLongArrayRegion(values, 0, 2, copied);
    return code;
}

JNIEXPORT jint JNICALL Java_velmo_kvo_lipsyncapi_LipSyncService_nativeSetAudioDelayMargin(JNIEnv*, jobject,
                                                                                          jlong service,
                                                                                          jlong delayMs)
{
    return akvo_lipsync_set_audio_delay_margin(serviceOf(service), fromJava(delayMs));
}

JNIEXPORT jint JNICALL Java_velmo_kvo_lipsyncapi_LipSyncService_nativeGetAudioDelayMargin(JNIEnv* env,
                                                                                          jobject,
                                                                                          jlong service,
                                                                                          jlongArray values)
{
    uint64_t margin = 0;
    const int32_t code = akvo_lipsync_get_audio_delay_margin(serviceOf(service), &margin);
    const jlong copied = toJava(margin);
    env->SetLongArrayRegion(values, 0, 1, &copied);
    return code;
}

JNIEXPORT jint JNICALL Java_velmo_kvo_lipsyncapi_LipSyncService_nativeGetAudioTimestamps(JNIEnv* env, jobject,
                                                                                         jlong service,
                                                                                         jlongArray values)
{
    akvo_lipsync_timestamps timestamps = {0, 0, 0, 0};
    const int32_t code = akvo_lipsync_get_audio_timestamps(serviceOf(service), &timestamps);
    const jlong copied[] = {toJava(timestamps.capture), toJava(timestamps.rendering),
                            toJava(timestamps.receiving), toJava(timestamps.jitter_buffer_depth)};
    env->SetLongArrayRegion(values, 0, 4, copied);
    return code;
}

JNIEXPORT jint JNICALL Java_velmo_kvo_lipsyncapi_LipSyncService_nativeSetVideoTimestamps(
    JNIEnv*, jobject, jlong service, jlong capture, jlong rendering, jlong receiving, jlong jitterBufferDepth)
{
    const akvo_lipsync_timestamps timestamps = {fromJava(capture), fromJava(rendering), fromJava(receiving),
                                                fromJava(jitterBufferDepth)};
    return akvo_lipsync_set_video_timestamps(serviceOf(service), &timestamps);
}

// Null, with an OutOfMemoryError pending, when there is no room for the text.
JNIEXPORT jbyteArray JNICALL Java_velmo_kvo_lipsyncapi_LipSyncService_nativeResultText(JNIEnv* env, jclass)
{
    return velmo::kvo::jni::textAsBytes(env, akvo_lipsync_result_text);
}

} // extern "C"
