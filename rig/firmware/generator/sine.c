#include "generator/sine.h"

static int32_t quarter[sineTurn / 4 + 1];

/// The power series of the sine, for 0 to a quarter turn. `x` and the result are times 2^30.
static int64_t series(int64_t x) {
  int64_t term = x;
  int64_t sum = x;
  for (int64_t n = 1; n <= 8; ++n) {
    term = term * x / sineOne * x / sineOne / (2 * n * (2 * n + 1));
    sum += n % 2 == 1 ? -term : term;
  }
  return sum;
}

void sinePrepare(void) {
  const int64_t halfPi = INT64_C(1686629713);  // pi / 2, times 2^30
  for (int64_t i = 0; i <= sineTurn / 4; ++i) {
    int64_t value = series(halfPi * i / (sineTurn / 4));
    quarter[i] = (int32_t)(value > sineOne ? sineOne : value);
  }
}

int32_t sineOf(uint32_t angle) {
  uint32_t within = angle % (sineTurn / 2);
  if (within > sineTurn / 4) {
    within = sineTurn / 2 - within;
  }
  return angle % sineTurn < sineTurn / 2 ? quarter[within] : -quarter[within];
}
