#include "MIDIKitCore/controllers/Controller.hpp"

#include <array>
#include <string_view>

namespace midikit::core {
namespace {

struct Row {
  std::uint8_t number;
  std::string_view text;
};

// Those that the MIDI 1.0 specification gives a meaning. A row is found by its number: see textsByNumber.
constexpr Row rows[] = {
    {0, "Bank Select"},
    {1, "Mod Wheel"},
    {2, "Breath Controller"},
    {4, "Foot Controller"},
    {5, "Portamento Time"},
    {6, "Data Entry MSB"},
    {7, "Volume"},
    {8, "Balance"},
    {10, "Pan"},
    {11, "Expression"},
    {12, "Effect Control 1"},
    {13, "Effect Control 2"},
    {16, "General Purpose 1"},
    {17, "General Purpose 2"},
    {18, "General Purpose 3"},
    {19, "General Purpose 4"},
    {32, "Bank Select LSB"},
    {33, "Mod Wheel LSB"},
    {34, "Breath Controller LSB"},
    {36, "Foot Controller LSB"},
    {37, "PortamentoTime LSB"},
    {38, "Data Entry LSB"},
    {39, "Volume LSB"},
    {40, "Balance LSB"},
    {42, "Pan LSB"},
    {43, "Expression LSB"},
    {44, "Effect Control 1 LSB"},
    {45, "Effect Control 2 LSB"},
    {48, "General Purpose 1 LSB"},
    {49, "General Purpose 2 LSB"},
    {50, "General Purpose 3 LSB"},
    {51, "General Purpose 4 LSB"},
    {64, "Sustain Pedal"},
    {65, "Portamento"},
    {66, "Sostenuto Pedal"},
    {67, "Soft Pedal"},
    {68, "Legato Footswitch"},
    {69, "Hold 2"},
    {70, "Sound Control 1 - Sound Variation"},
    {71, "Sound Control 2 - Timbre Intensity"},
    {72, "Sound Control 3 - Release Time"},
    {73, "Sound Control 4 - Attack Time"},
    {74, "Sound Control 5 - Brightness"},
    {75, "Sound Control 6 - Decay Time"},
    {76, "Sound Control 7 - Vibrato Rate"},
    {77, "Sound Control 8 - Vibrato Depth"},
    {78, "Sound Control 9 - Vibrato Delay"},
    {79, "Sound Control 10 - Undefined"},
    {80, "General Purpose 5"},
    {81, "General Purpose 6"},
    {82, "General Purpose 7"},
    {83, "General Purpose 8"},
    {84, "Portamento Control"},
    {88, "High Resolution Velocity Prefix"},
    {91, "Effects 1 Depth - Reverb Send Level"},
    {92, "Effects 2 Depth"},
    {93, "Effects 3 Depth - Chorus Send Level"},
    {94, "Effects 4 Depth"},
    {95, "Effects 5 Depth"},
    {96, "Data Increment"},
    {97, "Data Decrement"},
    {98, "NRPN LSB"},
    {99, "NRPN MSB"},
    {100, "RPN LSB"},
    {101, "RPN MSB"},
    {120, "All Sound Off"},
    {121, "Reset All Controllers"},
    {122, "Local Control"},
    {123, "All Notes Off"},
    {124, "Omni Mode Off"},
    {125, "Omni Mode On"},
    {126, "Mono Mode On"},
    {127, "Poly Mode On"},
};

constexpr std::array<std::string_view, 128> textsByNumber = [] {
  std::array<std::string_view, 128> texts{};
  for (const Row& row : rows) {
    texts[row.number] = row.text;
  }
  return texts;
}();

}  // namespace

std::string ControllerLSB::description() const {
  const std::string_view text = textsByNumber[number_];
  return text.empty() ? "Undefined CC" + std::to_string(number_ - 32) + " LSB" : std::string(text);
}

std::string Controller::description() const {
  if (const auto half = lsb()) {
    return half->description();
  }
  const std::string_view text = textsByNumber[number_];
  return text.empty() ? "Undefined CC" + std::to_string(number_) : std::string(text);
}

}  // namespace midikit::core
