#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

#include "MIDIKitCore/numbers/UInt.hpp"

namespace midikit::core {

/// The bank of a program change: `bankSelect` with its number, or `noBankSelect`, which leaves the receiver's
/// bank as it is.
class Bank {
 public:
  /// `noBankSelect`
  constexpr Bank() = default;

  static constexpr Bank noBankSelect() { return {}; }
  static constexpr Bank bankSelect(UInt14 number) { return Bank(number); }

  constexpr bool isBankSelect() const { return isBankSelect_; }

  /// Nothing for `noBankSelect`.
  constexpr std::optional<UInt14> number() const {
    return isBankSelect_ ? std::optional(number_) : std::nullopt;
  }

  /// "bankSelect(16383)" or "noBankSelect"
  std::string description() const;

  friend constexpr bool operator==(const Bank&, const Bank&) = default;

 private:
  constexpr explicit Bank(UInt14 number) : number_(number), isBankSelect_(true) {}

  UInt14 number_;
  bool isBankSelect_ = false;
};

}  // namespace midikit::core

template <>
struct std::hash<midikit::core::Bank> {
  constexpr std::size_t operator()(const midikit::core::Bank& bank) const noexcept {
    return bank.isBankSelect() ? std::size_t{1} + bank.number()->value() : 0;
  }
};
