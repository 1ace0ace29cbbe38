// Puts a bank of data after a program: both as Intel HEX, in the form that objcopy writes.
//
//   join PROGRAM.hex BANK.bin ADDRESS OUTPUT.hex
//
// The bank follows the program's last data record, and ADDRESS, a multiple of 16, must be above all of them.

#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { dataType = 0, endType = 1, linearAddressType = 4, startType = 5, recordBytes = 16 };

static void fail(const char* what, const char* why) {
  fprintf(stderr, "join: %s: %s\n", what, why);
  exit(1);
}

static FILE* opened(const char* path, const char* mode) {
  FILE* file = fopen(path, mode);
  if (file == NULL) {
    perror(path);
    exit(1);
  }
  return file;
}

static void writeRecord(FILE* out, unsigned type, uint32_t address, const uint8_t* bytes, size_t count) {
  unsigned sum = (unsigned)count + (address >> 8 & 0xFF) + (address & 0xFF) + type;
  fprintf(out, ":%02X%04X%02X", (unsigned)count, (unsigned)(address & 0xFFFF), type);
  for (size_t i = 0; i < count; ++i) {
    fprintf(out, "%02X", bytes[i]);
    sum += bytes[i];
  }
  fprintf(out, "%02X\r\n", -sum & 0xFF);
}

/// Writes the bank; `upper` is the upper half of the addresses so far.
static void writeBank(FILE* out, FILE* bank, uint32_t address, uint32_t upper) {
  uint8_t bytes[recordBytes];
  size_t count = 0;
  while ((count = fread(bytes, 1, sizeof bytes, bank)) > 0) {
    if (address >> 16 != upper) {
      upper = address >> 16;
      const uint8_t half[] = {(uint8_t)(upper >> 8), (uint8_t)upper};
      writeRecord(out, linearAddressType, 0, half, sizeof half);
    }
    writeRecord(out, dataType, address, bytes, count);
    address += (uint32_t)count;
  }
}

int main(int argumentCount, char** arguments) {
  if (argumentCount != 5) {
    fprintf(stderr, "usage: %s PROGRAM.hex BANK.bin ADDRESS OUTPUT.hex\n", arguments[0]);
    return 2;
  }
  FILE* program = opened(arguments[1], "rb");
  FILE* bank = opened(arguments[2], "rb");
  const uint32_t address = (uint32_t)strtoul(arguments[3], NULL, 16);
  FILE* out = opened(arguments[4], "wb");
  uint32_t upper = 0;
  int isWritten = 0;
  char line[600];
  while (fgets(line, sizeof line, program) != NULL) {
    unsigned count = 0, low = 0, type = 0, data = 0;
    if (sscanf(line, ":%2x%4x%2x%4x", &count, &low, &type, &data) != 4 && type != endType) {
      fail(arguments[1], "not a record");
    }
    if (type == linearAddressType) {
      upper = data;
    } else if (type == dataType && (upper << 16 | low) + count > address) {
      fail(arguments[1], "the program reaches into the bank");
    } else if ((type == startType || type == endType) && !isWritten) {
      writeBank(out, bank, address, upper);
      isWritten = 1;
    }
    fputs(line, out);
  }
  if (ferror(program) || ferror(bank) || ferror(out) || fclose(out) != 0 || !isWritten) {
    fail(arguments[4], "could not be written");
  }
  return 0;
}
