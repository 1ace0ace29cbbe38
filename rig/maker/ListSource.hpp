#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace karvex::rig {

/// One thing that is wrong with a maker's list.
struct ListFault {
  std::size_t line = 0;  ///< of the list, from 1; 0 if it concerns the list as a whole
  std::string place;     ///< "[2].mcu", elements counted from 0; empty for the list as a whole
  std::string text;      ///< sentences of printable ASCII in one line

  bool operator==(const ListFault&) const = default;
};

/// What the text of a list tells beyond its values: the line of each, keys that are there twice, and keys
/// that are a slip of the pen away from one that Karvex knows. Any bytes may be given; what is kept is
/// bounded by the keys that Karvex knows and by `mostFaults`.
class ListSource {
 public:
  /// Thread-safe: yes.
  /// Realtime-safe: no, it allocates.
  ListSource(std::string_view text, std::size_t mostFaults);

  /// What is wrong with the text itself. If it is no JSON, that alone.
  const std::vector<ListFault>& faults() const { return faults_; }
  bool isJson() const { return isJson_; }

  /// The line of "[2].mcu" or of "[2]"; 0 if there is no such place.
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: yes.
  std::size_t lineOf(const std::string& place) const;

 private:
  class Reader;

  bool isJson_ = false;
  std::vector<ListFault> faults_;
  std::map<std::string, std::size_t, std::less<>> lines_;
};

}  // namespace karvex::rig
