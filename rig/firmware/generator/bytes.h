#pragma once

#include <stdint.h>
#include <stdio.h>

/// Opens the file that a generator is told to write; ends the program with a message if that fails.
FILE* outputOpen(int argumentCount, char** arguments);

/// Closes it; gives the exit status of the program.
int outputClose(FILE* file);

/// Writes the `count` low bytes of a number, the least significant first.
void writeLittleEndian(FILE* file, uint32_t value, int count);
