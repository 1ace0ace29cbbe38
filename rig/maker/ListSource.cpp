#include "rig/maker/ListSource.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <numeric>
#include <set>

#include "loader/ascii.hpp"
#include "rig/maker/ListText.hpp"
#include "rig/service/ServedDevice.hpp"

namespace karvex::rig {
namespace {

/// Counts the lines that the JSON library has read.
class CountingIterator {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  CountingIterator(std::string_view::const_iterator at, std::size_t* line) : at_(at), line_(line) {}
  reference operator*() const { return *at_; }
  CountingIterator& operator++() {
    *line_ += *at_ == '\n' ? 1U : 0U;
    ++at_;
    return *this;
  }
  bool operator==(const CountingIterator& other) const { return at_ == other.at_; }

 private:
  std::string_view::const_iterator at_;
  std::size_t* line_;
};

/// How many letters must be put in, left out or replaced to get from one text to the other. In any letter
/// case.
std::size_t distance(std::string_view one, std::string_view other) {
  std::vector<std::size_t> row(other.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < one.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i + 1;
    for (std::size_t j = 0; j < other.size(); ++j) {
      const bool isSame = loader::is_same_ascii(one.substr(i, 1), other.substr(j, 1));
      const auto replaced = diagonal + (isSame ? 0U : 1U);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
    }
  }
  return row.back();
}

bool isKnown(std::string_view key) {
  const auto keys = servedDeviceKeys();
  return std::ranges::find(keys, key) != keys.end();
}

/// The key that an unknown one was probably meant to be, or nothing.
std::optional<std::string_view> meantBy(std::string_view key) {
  constexpr std::size_t slip = 2;  // letters
  for (const auto known : servedDeviceKeys()) {
    const bool isOfLength = key.size() + slip >= known.size() && key.size() <= known.size() + slip;
    const auto most = std::min(slip, known.size() / 3);  // "mac" is no "mcu".
    if (isOfLength && distance(key, known) <= most) {
      return known;
    }
  }
  return std::nullopt;
}

/// The library's own words without its name for them, and without what it quotes of the text.
std::string_view reasonOf(std::string_view message) {
  constexpr std::size_t enough = 120;  // bytes; it may quote a number of any length
  const auto colon = message.find(": ");
  const auto begin = colon == std::string_view::npos ? 0 : colon + 2;
  return message.substr(begin, std::min(enough, message.find("; last read") - begin));
}

}  // namespace

/// Takes the events of the JSON library's reader. Elements are what lies one level deep, their keys two.
class ListSource::Reader : public nlohmann::json::json_sax_t {
 public:
  Reader(ListSource& source, const std::size_t& line, std::size_t mostFaults)
      : source_(source), line_(line), mostFaults_(mostFaults) {}

  bool null() override { return value(); }
  bool boolean(bool) override { return value(); }
  bool number_integer(number_integer_t) override { return value(); }
  bool number_unsigned(number_unsigned_t) override { return value(); }
  bool number_float(number_float_t, const string_t&) override { return value(); }
  bool string(string_t&) override { return value(); }
  bool binary(binary_t&) override { return value(); }
  bool start_array(std::size_t) override { return open(/*isObject=*/false); }
  bool end_array() override { return close(); }
  bool start_object(std::size_t) override { return open(/*isObject=*/true); }
  bool end_object() override { return close(); }

  bool key(string_t& name) override {
    if (depth_ != 2 || !isInElement_) {
      return true;
    }
    if (isKnown(name)) {
      const auto place = elementPlace() + "." + name;
      if (!keys_.insert(name).second) {
        fault(place, fmt::format("The key {} appears twice; only the last one counts.", inQuotes(name)));
      }
      noteLine(place);
    } else if (const auto meant = hasRoom() ? meantBy(name) : std::nullopt) {
      fault(elementPlace(),
            fmt::format("Karvex ignores the key {}; did you mean {}?", inQuotes(name), inQuotes(*meant)));
    }
    return true;
  }

  bool parse_error(std::size_t, const std::string&, const nlohmann::json::exception& error) override {
    source_.faults_ = {{.line = line_, .text = fmt::format("This is not JSON: {}.", reasonOf(error.what()))}};
    return false;
  }

 private:
  bool open(bool isObject) {
    value();
    ++depth_;
    if (depth_ == 1) {
      isInList_ = !isObject;
    }
    if (depth_ == 2) {
      isInElement_ = isInList_ && isObject;
      keys_.clear();
    }
    return true;
  }

  bool close() {
    --depth_;
    return true;
  }

  bool value() {
    if (depth_ == 1 && isInList_) {
      ++elements_;
      noteLine(elementPlace());
    }
    return true;
  }

  bool hasRoom() const { return source_.faults_.size() < mostFaults_; }

  std::string elementPlace() const { return fmt::format("[{}]", elements_ - 1); }

  void noteLine(std::string place) {
    if (source_.lines_.size() < mostLines) {
      source_.lines_.insert_or_assign(std::move(place), line_);
    }
  }

  void fault(std::string place, std::string text) {
    if (hasRoom()) {
      source_.faults_.push_back({.line = line_, .place = std::move(place), .text = std::move(text)});
    }
  }

  /// No list of the largest size has more good elements and keys, and the bad ones that are reported come
  /// early.
  static constexpr std::size_t mostLines = 400'000;

  ListSource& source_;
  const std::size_t& line_;
  const std::size_t mostFaults_;
  std::size_t depth_ = 0;
  std::size_t elements_ = 0;
  bool isInList_ = false;
  bool isInElement_ = false;
  std::set<std::string, std::less<>> keys_;  ///< the known keys of the element until now
};

ListSource::ListSource(std::string_view text, std::size_t mostFaults) {
  std::size_t line = 1;
  Reader reader(*this, line, mostFaults);
  const char* const begin = text.data();
  const char* const end = begin + text.size();
  isJson_ = nlohmann::json::sax_parse(CountingIterator(begin, &line), CountingIterator(end, &line), &reader);
}

std::size_t ListSource::lineOf(const std::string& place) const {
  const auto found = lines_.find(place);
  return found != lines_.end() ? found->second : 0;
}

}  // namespace karvex::rig
