#include "bench/MIDIKitCore/ScalingBench.hpp"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "MIDIKitCore/ValueScaling.hpp"
#include "bench/MIDIKitCore/Measure.hpp"

namespace midikit::bench {
namespace {

using namespace core;

constexpr std::size_t valueCount = 4096;

/// Values over the whole range of `width` bits, or of the unit interval where `width` is 0.
template <class From>
std::vector<From> values(unsigned width) {
  std::mt19937_64 random(20260102);
  std::vector<From> values(valueCount);
  for (From& value : values) {
    if constexpr (std::is_floating_point_v<From>) {
      value = std::uniform_real_distribution<From>(0.0, 1.0)(random);
    } else {
      value = static_cast<From>(random() >> (64 - width));
    }
  }
  return values;
}

template <class From, class To>
To least(From value) {
  if constexpr (std::is_floating_point_v<From>) {
    return static_cast<To>(static_cast<std::int64_t>(value * std::numeric_limits<To>::max()));
  } else if constexpr (std::is_floating_point_v<To>) {
    return value / static_cast<To>(std::numeric_limits<From>::max());
  } else if constexpr (sizeof(From) < sizeof(To)) {
    return static_cast<To>(static_cast<To>(value) << (8 * (sizeof(To) - sizeof(From))));
  } else {
    return static_cast<To>(value >> (8 * (sizeof(From) - sizeof(To))));
  }
}

template <class From, class To, class Convert>
void compare(const std::string& name, unsigned width, Convert convert, int rounds) {
  const std::vector<From> from = values<From>(width);
  std::vector<To> to(from.size());
  Series bound("", from.size());
  Series series(name, from.size());
  for (int round = 0; round < rounds; ++round) {
    bound.measure([&] {
      for (std::size_t i = 0; i < from.size(); ++i) {
        to[i] = least<From, To>(from[i]);
      }
      keep(to.data());
    });
    series.measure([&] {
      for (std::size_t i = 0; i < from.size(); ++i) {
        to[i] = static_cast<To>(convert(from[i]));
      }
      keep(to.data());
    });
  }
  printAgainst(series, bound, "(wanted: at most 4)");
}

}  // namespace

void compareScaling(int rounds) {
  using U8 = std::uint8_t;
  using U16 = std::uint16_t;
  using U32 = std::uint32_t;
  printHeader("Scaling of a value, the bound being a shift, a product or a division", rounds);
  compare<U8, U16>("7 to 16 bits", 7, [](U8 v) { return scaledUp<7, 16>(v); }, rounds);
  compare<U8, U32>("7 to 32 bits", 7, [](U8 v) { return scaledUp<7, 32>(v); }, rounds);
  compare<U16, U32>("14 to 32 bits", 14, [](U16 v) { return scaledUp<14, 32>(v); }, rounds);
  compare<U16, U8>("16 to 7 bits", 16, [](U16 v) { return scaledDown<16, 7>(v); }, rounds);
  compare<U32, U8>("32 to 7 bits", 32, [](U32 v) { return scaledDown<32, 7>(v); }, rounds);
  compare<U32, U16>("32 to 14 bits", 32, [](U32 v) { return scaledDown<32, 14>(v); }, rounds);
  compare<double, U8>(
      "unit interval to 7 bits", 0, [](double v) { return integerFromUnitInterval<7>(v); }, rounds);
  compare<double, U16>(
      "unit interval to 16 bits", 0, [](double v) { return integerFromUnitInterval<16>(v); }, rounds);
  compare<double, U32>(
      "unit interval to 32 bits", 0, [](double v) { return integerFromUnitInterval<32>(v); }, rounds);
  compare<double, U32>(
      "bipolar interval to 32 bits", 0, [](double v) { return integerFromBipolarInterval<32>(v * 2 - 1); },
      rounds);
  compare<U8, double>(
      "7 bits to unit interval", 7, [](U8 v) { return unitIntervalFromInteger<7>(v); }, rounds);
  compare<U16, double>(
      "16 bits to unit interval", 16, [](U16 v) { return unitIntervalFromInteger<16>(v); }, rounds);
  compare<U32, double>(
      "32 bits to unit interval", 32, [](U32 v) { return unitIntervalFromInteger<32>(v); }, rounds);
  compare<U32, double>(
      "32 bits to bipolar interval", 32, [](U32 v) { return bipolarIntervalFromInteger<32>(v); }, rounds);
}

}  // namespace midikit::bench
