#include "foundation/text/Uuid.hpp"

#include <cstring>
#include <random>

#include "foundation/text/HexText.hpp"

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
  auto text = hexText(std::string(bytes.begin(), bytes.end()));
  for (const std::size_t place : {20U, 16U, 12U, 8U}) {
    text.insert(place, 1, '-');
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
