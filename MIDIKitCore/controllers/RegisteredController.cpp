#include "MIDIKitCore/controllers/RegisteredController.hpp"

#include <array>
#include <string_view>

#include "MIDIKitCore/detail/FieldHash.hpp"
#include "MIDIKitCore/detail/ParameterNumberText.hpp"

namespace midikit::core {
namespace {

// From `threeDimensionalAzimuthAngle` on.
constexpr std::array<std::string_view, 9> threeDimensionalNames = {"threeDimensionalAzimuthAngle",
                                                                   "threeDimensionalElevationAngle",
                                                                   "threeDimensionalGain",
                                                                   "threeDimensionalDistanceRatio",
                                                                   "threeDimensionalMaximumDistance",
                                                                   "threeDimensionalGainAtMaximumDistance",
                                                                   "threeDimensionalReferenceDistanceRatio",
                                                                   "threeDimensionalPanSpreadAngle",
                                                                   "threeDimensionalRollAngle"};

}  // namespace

std::string RegisteredController::description() const {
  switch (kind_) {
    case Kind::pitchBendSensitivity:
      return "pitchBendSensitivity(semitones: " + msb_->description() + ", cents: " + lsb_->description() +
             ")";
    case Kind::channelFineTuning:
      return "channelFineTuning(" + UInt14(UInt7Pair{.msb = *msb_, .lsb = *lsb_}).description() + ")";
    case Kind::channelCoarseTuning:
      return "channelCoarseTuning(" + msb_->description() + ")";
    case Kind::tuningProgramChange:
      return "tuningProgramChange(zero-based: " + msb_->description() + ")";
    case Kind::tuningBankSelect:
      return "tuningBankSelect(zero-based: " + msb_->description() + ")";
    case Kind::modulationDepthRange:
      return detail::dataEntryText("modulationDepthRange(", msb_, lsb_);
    case Kind::mpeConfigurationMessage:
      return detail::dataEntryText("mpeConfigurationMessage(", msb_, lsb_);
    case Kind::raw:
      return detail::dataEntryText("raw(param: " + parameter_.description() + ", ", msb_, lsb_);
    case Kind::null:
      return "null";
    default:
      break;
  }
  const std::string_view name = threeDimensionalNames[parameter_.lsb.value()];
  return detail::dataEntryText(std::string(name) + "(", msb_, lsb_);
}

}  // namespace midikit::core

std::size_t std::hash<midikit::core::RegisteredController>::operator()(
    const midikit::core::RegisteredController& parameter) const noexcept {
  return midikit::core::hashOf(parameter.kind(), parameter.parameterNumber(), parameter.dataEntryMSB(),
                               parameter.dataEntryLSB());
}
