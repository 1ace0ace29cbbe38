#include "generator/bytes.h"

#include <stdlib.h>

FILE* outputOpen(int argumentCount, char** arguments) {
  if (argumentCount != 2) {
    fprintf(stderr, "usage: %s OUTPUT\n", arguments[0]);
    exit(2);
  }
  FILE* file = fopen(arguments[1], "wb");
  if (file == NULL) {
    perror(arguments[1]);
    exit(1);
  }
  return file;
}

int outputClose(FILE* file) {
  int failed = ferror(file);
  if (fclose(file) != 0 || failed) {
    fprintf(stderr, "the output could not be written\n");
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}

void writeLittleEndian(FILE* file, uint32_t value, int count) {
  for (; count > 0; --count) {
    fputc((int)(value & 0xFF), file);
    value >>= 8;
  }
}
