#pragma once

#include <stdbool.h>
#include <stdint.h>

/// Bytes on their way from one interrupt handler to the main loop. One writer, one reader, and
/// indices of a single byte: neither side has to hold off interrupts, on the 8-bit chips either.
enum { byteQueueSize = 64 };

struct ByteQueue {
  volatile uint8_t writeIndex;
  volatile uint8_t readIndex;
  volatile uint8_t bytes[byteQueueSize];
};

/// Writer's side. A byte that finds the queue full is dropped: the reader has lost the line anyway.
static inline void byteQueuePut(struct ByteQueue* queue, uint8_t byte) {
  uint8_t index = queue->writeIndex;
  uint8_t next = (uint8_t)(index + 1) % byteQueueSize;
  if (next != queue->readIndex) {
    queue->bytes[index] = byte;
    queue->writeIndex = next;
  }
}

/// Reader's side. False when the queue is empty.
static inline bool byteQueueTake(struct ByteQueue* queue, uint8_t* byte) {
  uint8_t index = queue->readIndex;
  if (index == queue->writeIndex) {
    return false;
  }
  *byte = queue->bytes[index];
  queue->readIndex = (uint8_t)(index + 1) % byteQueueSize;
  return true;
}
