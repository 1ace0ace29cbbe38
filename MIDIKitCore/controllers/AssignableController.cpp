#include "MIDIKitCore/controllers/AssignableController.hpp"

#include "MIDIKitCore/detail/FieldHash.hpp"
#include "MIDIKitCore/detail/ParameterNumberText.hpp"

namespace midikit::core {

std::string AssignableController::description() const {
  return kind_ == Kind::null
             ? "null"
             : detail::dataEntryText("raw(param: " + parameter_.description() + ", ", msb_, lsb_);
}

}  // namespace midikit::core

std::size_t std::hash<midikit::core::AssignableController>::operator()(
    const midikit::core::AssignableController& parameter) const noexcept {
  return midikit::core::hashOf(parameter.kind(), parameter.parameterNumber(), parameter.dataEntryMSB(),
                               parameter.dataEntryLSB());
}
