#include "foundation/text/Uuid.hpp"

#include <cstring>
#include <random>
#include <string_view>

namespace karvex::foundation {

Uuid Uuid::random() {
  thread_local std::random_device device;
  Uuid uuid;
  for (std::size_t at = 0; at < uuid.bytes.size(); at += sizeof(unsigned)) {
    const unsigned bits = device();
    std::memcpy(uuid.bytes.data() + at, &bits, sizeof bits);
  }
  uuid.bytes[6] = static_cast<std::uint8_t>((uuid.bytes[6] & 0x0FU) | 0x40U);  // version 4
  uuid.bytes[8] = static_cast<std::uint8_t>((uuid.bytes[8] & 0x3FU) | 0x80U);  // variant of RFC 9562
  return uuid;
}

std::string Uuid::text() const {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) {
      text += '-';
    }
    text += digits[bytes[i] >> 4U];
    text += digits[bytes[i] & 0xFU];
  }
  return text;
}

}  // namespace karvex::foundation

std::size_t std::hash<karvex::foundation::Uuid>::operator()(
    const karvex::foundation::Uuid& uuid) const noexcept {
  // The bits are random, so any of them will do.
  std::size_t value = 0;
  std::memcpy(&value, uuid.bytes.data(), sizeof value);
  return value;
}
