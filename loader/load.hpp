#pragma once

/// The face of the loader: one call programs one board with one file.
namespace karvex::loader {

// What setParameters can answer.
inline constexpr const char* load_started = "Success";
inline constexpr const char* load_file_error = "Error: Could not read file";
inline constexpr const char* load_permission_error = "Error - Permission denied";
inline constexpr const char* load_open_error = "Error - Could not open Teensy";
inline constexpr const char* load_upload_error = "Error : Upload error";

/// Reads the file into the picture, waits for a board in HalfKay mode and starts the programming worker.
/// Blocks for up to about 26 s. Called on the main thread, never while a worker runs.
///
/// `url_text` is the text of a file URL; what stands behind "file://" is the path, with no escape resolved. A
/// text of more than 255 characters has no room in the loader and counts as a file that can't be read.
/// `mcu_name` is a name of the microcontroller table; any other one ends the process with exit status 1.
///
/// The answer is one of the five texts above. load_started means that the worker runs: whether the board was
/// programmed is told by the load status reaching 7.
const char* setParameters(const char* url_text, const char* mcu_name);

}  // namespace karvex::loader
