#ifndef VELMO_UTILITIES_TEXTBUFFER_H
#define VELMO_UTILITIES_TEXTBUFFER_H

#include <cstddef>
#include <cstring>
#include <string>

namespace velmo {
namespace utilities {

// A text that lives in the object, on the stack where the object is a local,
// while it fits in `InlineCapacity` bytes with its terminating zero, and
// moves to the heap for good once it grows beyond. Appending to the inline
// text is a copy and nothing else. A failed allocation throws
// std::bad_alloc, as std::string does.
template <std::size_t InlineCapacity>
class TextBuffer
{
public:
    TextBuffer() = default;
    TextBuffer(const TextBuffer&) = delete;
    TextBuffer& operator=(const TextBuffer&) = delete;

    void append(const char* text, std::size_t size)
    {
        if (!_inHeap && size < InlineCapacity - _size) {
            std::memcpy(_inline + _size, text, size);
            _size += size;
            return;
        }
        moveToHeap();
        _heap.append(text, size);
    }

    template <std::size_t N>
    void append(const char (&literal)[N])
    {
        append(literal, N - 1);
    }

    void append(const std::string& text) { append(text.data(), text.size()); }

    void prepend(const char* text, std::size_t size)
    {
        if (!_inHeap && size < InlineCapacity - _size) {
            std::memmove(_inline + size, _inline, _size);
            std::memcpy(_inline, text, size);
            _size += size;
            return;
        }
        moveToHeap();
        _heap.insert(0, text, size);
    }

    bool empty() const { return _inHeap ? _heap.empty() : _size == 0; }

    const char* c_str()
    {
        if (_inHeap) {
            return _heap.c_str();
        }
        _inline[_size] = '\0';
        return _inline;
    }

private:
    void moveToHeap()
    {
        if (!_inHeap) {
            _heap.assign(_inline, _size);
            _inHeap = true;
        }
    }

    char _inline[InlineCapacity];
    std::size_t _size = 0;
    bool _inHeap = false;
    std::string _heap;
};

} // namespace utilities
} // namespace velmo

#endif
