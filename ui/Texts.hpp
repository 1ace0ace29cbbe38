#pragma once

#include <array>
#include <string_view>

/// The window's own words, wherever it is shown.
namespace karvex::ui::texts {

/// What stands above the table. The second line begins with words that stand out.
inline constexpr std::array<std::string_view, 2> instruction{
    "Click on the first item of the list, then click on 'Upload firmware' button.",
    "DO NOT power-down or disconnect your equipment until the upgrade procedure completes!"};
inline constexpr std::string_view emphasisedInstruction = "DO NOT";

inline constexpr std::string_view uploadButton = "Upload Firmware";
inline constexpr std::string_view uploadHelp = "Start device(s) upload process";
inline constexpr std::string_view refreshHelp = "Refresh device list";
inline constexpr std::string_view syncHelp = "Sync your current equipment information";

/// The titles of the device table's columns, in order.
inline constexpr std::array<std::string_view, 6> columnTitles{
    "Device", "Serial Number", "Firmware Name", "Current Version", "Target Version", "Status"};

/// The lines of the sheet that sends the equipment report, each centred, and its button.
inline constexpr std::array<std::string_view, 5> sheet{
    "Connect your device to your computer",
    "(Will be easier for the device explorer if your device is the only one connected!)",
    "Make sure you device is connected and powered-up",
    "",
    "Click below when done to synchronize your configuration information.",
};
inline constexpr std::string_view sendButton = "Click Me";

/// Why a front that is to be closed stays.
inline constexpr std::string_view closingHeldBack =
    "An upgrade is running. Karvex closes when it is over: equipment must not be left half programmed.";

/// The button of every alert.
inline constexpr std::string_view okButton = "OK";

}  // namespace karvex::ui::texts
