#include "common/debounce.h"

enum { settleMilliseconds = 8 };

bool debounce(struct Debouncer* debouncer, bool contactClosed) {
  if (contactClosed == debouncer->closed) {
    debouncer->steadyFor = 0;
    return false;
  }
  if (++debouncer->steadyFor < settleMilliseconds) {
    return false;
  }
  debouncer->steadyFor = 0;
  debouncer->closed = contactClosed;
  return true;
}
