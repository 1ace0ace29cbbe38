#include "MIDIKitCore/controllers/Bank.hpp"

namespace midikit::core {

std::string Bank::description() const {
  return isBankSelect_ ? "bankSelect(" + number_.description() + ")" : "noBankSelect";
}

}  // namespace midikit::core
