#pragma once

#include <stdbool.h>
#include <stdint.h>

/// Debouncer of one mechanical contact that is looked at every millisecond.
struct Debouncer {
  uint8_t steadyFor;  ///< Milliseconds for which the contact has differed from `closed`.
  bool closed;        ///< The settled state.
};

/// Takes the contact's present state. True when the settled state has just changed: the contact
/// must differ from it for 8 ms without a break, which is longer than a footswitch bounces.
bool debounce(struct Debouncer* debouncer, bool contactClosed);
