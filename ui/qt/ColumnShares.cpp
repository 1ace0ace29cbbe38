#include "ui/qt/ColumnShares.hpp"

#include <algorithm>

namespace karvex::ui::qt {
namespace {

/// No column is narrower, as long as there is room for all of them.
constexpr int leastWidth = 90;

class Shares {
 public:
  explicit Shares(int room) : room_(room) {}

  /// As far as there is room.
  void raise(Column column, int wish) {
    auto& width = widths_.at(static_cast<std::size_t>(column));
    const auto more = std::clamp(wish - width, 0, room_);
    width += more;
    room_ -= more;
  }
  /// The same, with no more than an equal share of the room if it is one of so many.
  void raiseFairly(Column column, int wish, int others) {
    raise(column, std::min(wish, widths_.at(static_cast<std::size_t>(column)) + room_ / others));
  }
  const std::array<int, sharingColumns>& widths() const { return widths_; }

 private:
  std::array<int, sharingColumns> widths_{};
  int room_;
};

}  // namespace

std::array<int, sharingColumns> shareOut(int room, const std::array<ColumnWish, sharingColumns>& wishes) {
  constexpr auto columns = static_cast<int>(sharingColumns);
  const auto contentOf = [&](Column column) { return wishes.at(static_cast<std::size_t>(column)).content; };
  std::array names{Column::device, Column::firmwareName};
  std::ranges::sort(names, {}, contentOf);
  const std::array inOrder{Column::serialNumber, Column::currentVersion, Column::targetVersion, names[0],
                           names[1]};

  Shares shares(room);
  for (const auto column : inOrder) {
    shares.raise(column, std::min(leastWidth, room / columns));
  }
  for (const auto column : {Column::serialNumber, Column::currentVersion, Column::targetVersion}) {
    shares.raise(column, contentOf(column));
  }
  shares.raiseFairly(names[0], contentOf(names[0]), 2);
  shares.raise(names[1], contentOf(names[1]));
  for (const auto column : inOrder) {
    shares.raise(column, wishes.at(static_cast<std::size_t>(column)).title);
  }
  for (auto others = columns; const auto column : inOrder) {
    shares.raiseFairly(column, room, others--);
  }
  return shares.widths();
}

}  // namespace karvex::ui::qt
