/// The functions that the compiler calls by itself to clear and copy variables. Every C compiler
/// counts on them, even where there is no C library.

#include <stddef.h>

void* memset(void* to, int value, size_t count);
void* memcpy(void* restrict to, const void* restrict from, size_t count);

void* memset(void* to, int value, size_t count) {
  unsigned char* byte = to;
  while (count-- > 0) {
    *byte++ = (unsigned char)value;
  }
  return to;
}

void* memcpy(void* restrict to, const void* restrict from, size_t count) {
  unsigned char* target = to;
  const unsigned char* source = from;
  while (count-- > 0) {
    *target++ = *source++;
  }
  return to;
}
