#ifndef VELMO_KVO_JNI_JAVAERRORS_H
#define VELMO_KVO_JNI_JAVAERRORS_H

#include <jni.h>

#include <cstddef>
#include <new>
#include <vector>

namespace velmo {
namespace kvo {
namespace jni {

// No C++ exception may cross into the JVM; a failed allocation becomes the
// Java error for it, thrown when the native method returns. Returns 0, for
// the native methods that return a number.
inline jint throwOutOfMemory(JNIEnv* env, const char* what)
{
    const jclass error = env->FindClass("java/lang/OutOfMemoryError");
    if (error != nullptr) {
        env->ThrowNew(error, what);
    }
    return 0;
}

// A text that a C function copies as snprintf does (`copy(buffer, size)`
// returns the whole length), as bytes: a text from the engine need not be the
// JVM's modified UTF-8. Null, with an OutOfMemoryError pending, when there is
// no room for it.
template <class Copy>
jbyteArray textAsBytes(JNIEnv* env, Copy copy)
{
    try {
        std::vector<char> text(copy(nullptr, 0) + 1);
        copy(text.data(), text.size());
        const jsize length = static_cast<jsize>(text.size() - 1);
        const jbyteArray bytes = env->NewByteArray(length);
        if (bytes != nullptr) {
            env->SetByteArrayRegion(bytes, 0, length, reinterpret_cast<const jbyte*>(text.data()));
        }
        return bytes;
    } catch (const std::bad_alloc&) {
        throwOutOfMemory(env, "No memory for the lip-sync call's text");
        return nullptr;
    }
}

} // namespace jni
} // namespace kvo
} // namespace velmo

#endif
