// Bounded string appends.
#include <cstdint>
#include <cstring>

#include "zan/platform.hpp"

namespace {

// Error numbers of the safe-string functions.
enum : int32_t {
    es_null_pointer = 400,
    es_zero_length = 401,
    es_too_large = 403,
    es_overlap = 404,
    es_no_space = 406,
    es_unterminated = 407,
};
constexpr size_t k_room_max = SIZE_MAX >> 1;

bool overlap(const char* a, size_t alen, const char* b, size_t blen) {
    auto x = reinterpret_cast<uintptr_t>(a);
    auto y = reinterpret_cast<uintptr_t>(b);
    return x < y + blen && y < x + alen;
}

// The length of the text in a buffer of `size` bytes (`size` when it holds no terminator).
// A fresh, empty buffer is the common case and needs no scan.
size_t used_of(const char* dest, size_t size) { return dest[0] == '\0' ? 0 : strnlen(dest, size); }

}  // namespace

extern "C" {

void __strcat_to_buf(size_t size, char* dest, const char* src) {
    if (!dest || size == 0) return;
    size_t used = used_of(dest, size);
    if (used == size) {   // unterminated: cut to fit
        dest[size - 1] = '\0';
        used = size - 1;
    }
    if (!src) return;
    size_t n = strnlen(src, size - 1 - used);
    std::memmove(dest + used, src, n);
    dest[used + n] = '\0';
}

// Appends src to the text in dest, whose buffer holds room bytes. On any refusal dest is
// left empty (when it can be written at all) and a non-zero error number is returned.
int32_t strcat_s(char* dest, size_t room, const char* src) {
    if (!dest) return es_null_pointer;
    if (room == 0) return es_zero_length;
    if (room > k_room_max) return es_too_large;
    if (!src) {
        dest[0] = '\0';
        return es_null_pointer;
    }
    size_t used = used_of(dest, room);
    if (used == room) {
        dest[0] = '\0';
        return es_unterminated;
    }
    // Only whether the text fits matters: it is measured no further than the room.
    size_t n = strnlen(src, room - used);
    if (n >= room - used) {
        dest[0] = '\0';
        return es_no_space;
    }
    if (overlap(dest, used + n + 1, src, n + 1)) {
        dest[0] = '\0';
        return es_overlap;
    }
    std::memcpy(dest + used, src, n + 1);
    return 0;
}

}  // extern "C"
