#include <gmock/gmock.h>

#include <QAbstractItemDelegate>
#include <QAccessible>
#include <QHeaderView>
#include <QScreen>
#include <QScrollBar>
#include <QSignalSpy>
#include <array>
#include <cstdlib>
#include <functional>
#include <vector>

#include "tests/ui/qt/WindowFixture.hpp"
#include "ui/qt/CellDelegate.hpp"
#include "ui/qt/ColumnShares.hpp"
#include "ui/qt/DeviceTableModel.hpp"
#include "ui/qt/Palette.hpp"
#include "ui/qt/RoundedFrame.hpp"

namespace karvex::ui::qt {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::Eq;
using testing::IsEmpty;
using testing::Not;

QString textAt(DeviceTable& table, int row, Column column) {
  return table.model()->index(row, static_cast<int>(column)).data().toString();
}

/// The colours of a cell's pixels, as drawn.
QImage pictureOf(WindowFixture& bench, int row, Column column) {
  const auto cell = bench.table().visualRect(bench.table().model()->index(row, static_cast<int>(column)));
  return bench.table().viewport()->grab(cell).toImage();
}

/// About that colour: the strokes of letters are thin, and their edges are mixed with the ground.
bool hasPixel(const QImage& picture, const QColor& colour) {
  constexpr int nearby = 30;
  const auto isNear = [](int one, int other) { return std::abs(one - other) <= nearby; };

  for (int y = 0; y < picture.height(); ++y) {
    for (int x = 0; x < picture.width(); ++x) {
      const auto pixel = picture.pixelColor(x, y);
      if (isNear(pixel.red(), colour.red()) && isNear(pixel.green(), colour.green()) &&
          isNear(pixel.blue(), colour.blue())) {
        return true;
      }
    }
  }
  return false;
}

TEST(DeviceTable, ShowsTheTitlesAndTheCellsInOrder) {
  WindowFixture bench(samples::idle());
  const auto& model = *bench.table().model();
  QStringList titles;
  for (int column = 0; column < model.columnCount(); ++column) {
    titles << model.headerData(column, Qt::Horizontal).toString();
  }
  EXPECT_THAT(titles, ElementsAre("Device", "Serial Number", "Firmware Name", "Current Version",
                                  "Target Version", "Status"));
  ASSERT_EQ(model.rowCount(), 5);
  EXPECT_EQ(textAt(bench.table(), 0, Column::device), "1 - LED Ring");
  EXPECT_EQ(textAt(bench.table(), 0, Column::serialNumber), "#1000010");
  EXPECT_EQ(textAt(bench.table(), 0, Column::firmwareName), "firmware-1");
  EXPECT_EQ(textAt(bench.table(), 0, Column::currentVersion), "1.4.0");
  EXPECT_EQ(textAt(bench.table(), 0, Column::targetVersion), "1.5.0");
  EXPECT_EQ(textAt(bench.table(), 0, Column::status), "Idle");
  EXPECT_EQ(bench.table().columnWidth(static_cast<int>(Column::status)), 180);
}

TEST(DeviceTable, DrawsEachToneReadablyOnLightAndDarkGround) {
  const auto usual = QApplication::palette();
  for (const auto& ground : {QColor(Qt::white), QColor(0x1b, 0x1c, 0x1f)}) {
    QPalette palette(ground, ground);
    palette.setColor(QPalette::Base, ground);
    palette.setColor(QPalette::Highlight, mix(ground, Qt::blue, 0.2));
    QApplication::setPalette(palette);
    WindowFixture bench(samples::everyStatus());
    bench.window.resize(1300, 860);
    QApplication::processEvents();
    bench.table().setFocus();
    const auto frame = bench.table().parentWidget()->grab().toImage();
    EXPECT_GE(contrastBetween(frame.pixelColor(tablePadding + 1, frame.height() / 2), ground), markContrast);
    const auto rows = samples::everyStatus().rows;
    for (int row = 0; row < static_cast<int>(rows.size()); ++row) {
      if (row == bench.selectedRow()) {
        continue;  // Has a ground of its own.
      }
      const auto& shown = rows.at(static_cast<std::size_t>(row));
      const auto picture = pictureOf(bench, row, Column::status);
      EXPECT_TRUE(hasPixel(picture, shadeOf(shown.statusTone, ground))) << shown.statusText;
      EXPECT_TRUE(hasPixel(picture, shadeOf(shown.onlineMark, ground, markContrast))) << shown.statusText;
      EXPECT_TRUE(
          hasPixel(pictureOf(bench, row, Column::currentVersion), shadeOf(shown.currentVersionTone, ground)));
    }
  }
  QApplication::setPalette(usual);
}

TEST(DeviceTable, SaysInWordsWhatItSaysWithColours) {
  WindowFixture bench(samples::running());
  const auto described = [&](int row, Column column) {
    return bench.table()
        .model()
        ->index(row, static_cast<int>(column))
        .data(Qt::AccessibleDescriptionRole)
        .toString();
  };
  EXPECT_EQ(described(0, Column::status), "online");
  EXPECT_EQ(described(2, Column::status), "offline, 228 of 392 blocks sent");
  EXPECT_EQ(described(0, Column::currentVersion), "same as the target version");
  EXPECT_EQ(described(2, Column::currentVersion), "differs from the target version");
  auto* table = QAccessible::queryAccessibleInterface(&bench.table());
  ASSERT_NE(table, nullptr);
  EXPECT_EQ(table->tableInterface()->rowCount(), 5);
  EXPECT_EQ(table->tableInterface()->cellAt(0, 5)->text(QAccessible::Name), "Success");
}

TEST(DeviceTable, AClickOnARowIsAWishAndSelectsNothingByItself) {
  WindowFixture bench(samples::idle());
  bench.clickRow(3);
  EXPECT_THAT(bench.actions.selections, ElementsAre(samples::idle().rows[3].id));
  EXPECT_EQ(bench.selectedRow(), -1);
  bench.window.draw(samples::selected());
  EXPECT_EQ(bench.selectedRow(), 0) << "what is shown is what the snapshot says";
}

TEST(DeviceTable, WhoTakesTheSelectionAwayWishesForNoneAndSeesWhatTheSnapshotSays) {
  for (const auto& snapshot : {samples::selected(), samples::running()}) {
    WindowFixture bench(snapshot);
    const auto row = bench.selectedRow();
    ASSERT_GE(row, 0);
    auto& viewport = *bench.table().viewport();
    const QPoint beside(viewport.width() / 2, viewport.height() - 60);
    ASSERT_FALSE(bench.table().indexAt(beside).isValid());
    QTest::mouseClick(&viewport, Qt::LeftButton, Qt::NoModifier, beside);
    EXPECT_THAT(bench.actions.selections, Not(IsEmpty()));
    for (const auto& take : std::vector<std::function<void()>>{
             [&] { bench.table().clearSelection(); },
             [&] { bench.table().selectionModel()->clearSelection(); },
             [&] { bench.table().selectionModel()->clear(); },
         }) {
      const auto before = bench.actions.selections.size();
      take();
      EXPECT_EQ(bench.actions.selections.size(), before + 1);
    }
    EXPECT_THAT(bench.actions.selections, Each(Eq(std::nullopt)));
    EXPECT_EQ(bench.selectedRow(), row) << "during a run it is the run's";
  }
  WindowFixture bench(samples::selected());
  bench.window.draw(samples::idle());
  EXPECT_EQ(bench.selectedRow(), -1);
  EXPECT_THAT(bench.actions.selections, IsEmpty()) << "drawing is no wish";
}

TEST(DeviceTable, TheArrowKeysGoFromTheShownSelection) {
  WindowFixture bench(samples::idle());
  const auto rows = samples::idle().rows;
  QTest::keyClick(&bench.table(), Qt::Key_Down);
  EXPECT_THAT(bench.actions.selections, ElementsAre(rows[0].id));
  bench.actions.selections.clear();
  QTest::keyClick(&bench.table(), Qt::Key_End);
  QTest::keyClick(&bench.table(), Qt::Key_Home);
  EXPECT_THAT(bench.actions.selections, ElementsAre(rows[4].id, rows[0].id));
  auto snapshot = samples::idle();
  snapshot.selected = rows[2].id;
  bench.window.draw(snapshot);
  bench.actions.selections.clear();
  QTest::keyClick(&bench.table(), Qt::Key_Down);
  QTest::keyClick(&bench.table(), Qt::Key_Up);
  QTest::keyClick(&bench.table(), Qt::Key_End);
  QTest::keyClick(&bench.table(), Qt::Key_Home);
  EXPECT_THAT(bench.actions.selections, ElementsAre(rows[3].id, rows[1].id, rows[4].id, rows[0].id));
  EXPECT_EQ(bench.selectedRow(), 2);
}

TEST(DeviceTable, AnotherListKeepsNoSelectionThatTheSnapshotHasNot) {
  WindowFixture bench(samples::selected());
  ASSERT_EQ(bench.selectedRow(), 0);
  auto refreshed = samples::selected();  // New records: the old selection matches no row any more.
  for (auto& row : refreshed.rows) {
    row.id.bytes.front() = 0xAB;
  }
  bench.window.draw(refreshed);
  EXPECT_EQ(bench.selectedRow(), -1);
  EXPECT_EQ(bench.table().model()->rowCount(), 5);
  EXPECT_TRUE(bench.actions.calls.empty()) << "drawing is no action of the user";
}

TEST(DeviceTable, DrawsNothingAnewWithoutAChange) {
  WindowFixture bench(samples::running());
  const QSignalSpy resets(bench.table().model(), &QAbstractItemModel::modelReset);
  QSignalSpy changes(bench.table().model(), &QAbstractItemModel::dataChanged);
  bench.window.draw(samples::running());
  EXPECT_TRUE(changes.isEmpty());
  auto further = samples::running();
  further.rows[2].statusText = "Rebooting...";
  bench.window.draw(further);
  ASSERT_EQ(changes.size(), 1);
  EXPECT_EQ(changes.front().at(0).toModelIndex().row(), 2);
  EXPECT_TRUE(resets.isEmpty());
}

TEST(DeviceTable, TheBarBelongsToTheRunAndFollowsItsLoad) {
  auto snapshot = samples::running();
  snapshot.rows[3] = samples::rowWith(5, 4);  // Kept from a run that stopped there.
  WindowFixture bench(snapshot);
  const auto cell = bench.table().model()->index(2, static_cast<int>(Column::status));
  const auto bar = [&] { return cell.data(DeviceTableModel::barRole).toPointF(); };
  EXPECT_EQ(bar(), QPointF(0, 228.0 / 392.0));
  bench.progress = {.blocksSent = 392, .blocksToSend = 392};
  EXPECT_TRUE(QTest::qWaitFor([&] { return bar() == QPointF(0, 1); }));
  EXPECT_EQ(cell.data().toString(), "Programming...");
  bench.progress = {};  // No block was sent yet: a piece of it wanders.
  EXPECT_TRUE(QTest::qWaitFor([&] { return bar().x() > 0; }));
  const auto before = bar();
  EXPECT_TRUE(QTest::qWaitFor([&] { return bar() != before && bar().y() - bar().x() < 0.5; }));
  for (const int row : {0, 1, 3, 4}) {
    EXPECT_FALSE(cell.siblingAtRow(row).data(DeviceTableModel::barRole).isValid());
  }
  snapshot.isRunning = false;
  bench.window.draw(snapshot);
  EXPECT_FALSE(cell.data(DeviceTableModel::barRole).isValid());
}

TEST(DeviceTable, NamesCantBreakTheirLineOrActAsMarkupOrGoOn) {
  const struct {
    std::string name;
    std::string shown;
  } cases[] = {
      {std::string(300, 'x'), std::string(300, 'x')},
      {std::string(2'000'000, 'x'), std::string(300, 'x') + "\xE2\x80\xA6"},
      {"a\nb\x1b \xE2\x80\xAE \xF3\xA0\x80\x81",
       "a\xEF\xBF\xBD"
       "b\xEF\xBF\xBD \xEF\xBF\xBD \xEF\xBF\xBD"},
      {"\xF0\x9F\x91\xA9\xE2\x80\x8D\xF0\x9F\x8E\xA4",
       "\xF0\x9F\x91\xA9\xE2\x80\x8D\xF0\x9F\x8E\xA4"},  // Joined.
      {"<img src='file:///etc/hostname'>", "<img src='file:///etc/hostname'>"},
  };
  auto snapshot = samples::idle();
  for (const auto& one : cases) {
    snapshot.rows[0].firmwareName = one.name;
    WindowFixture bench(snapshot);
    const auto cell = bench.table().model()->index(0, static_cast<int>(Column::firmwareName));
    EXPECT_EQ(cell.data().toString().toStdString(), one.shown);
    EXPECT_EQ(cell.data(Qt::ToolTipRole).toString(),
              "<span>" + cell.data().toString().toHtmlEscaped() + "</span>");
  }
}

TEST(DeviceTable, LongTextsNeverPushTheStatusOffTheScreen) {
  const std::string longText = "a text that is too long for its column, whichever that is";
  auto crowded = samples::idle();
  for (auto& row : crowded.rows) {
    row.device = row.serialNumber = row.firmwareName = row.currentVersion = row.targetVersion = longText;
  }
  auto fewLong = samples::idle();
  fewLong.rows[0].firmwareName = longText;
  for (const auto& snapshot : {crowded, fewLong, samples::idle(), Snapshot{}}) {
    WindowFixture bench(snapshot);
    for (const auto& size : {bench.window.minimumSize(), QSize(1300, 860)}) {
      bench.window.resize(size);
      QApplication::processEvents();
      const auto& header = *bench.table().horizontalHeader();
      EXPECT_EQ(header.length(), bench.table().viewport()->width());
      EXPECT_EQ(header.sectionSize(5), 180);
      EXPECT_FALSE(bench.table().horizontalScrollBar()->isVisible());
      for (int column = 0; column < 5; ++column) {
        EXPECT_GE(header.sectionSize(column), 90) << column;
      }
    }
  }
  WindowFixture bench(crowded);
  EXPECT_TRUE(bench.table()
                  .model()
                  ->index(0, 0)
                  .data(Qt::ToolTipRole)
                  .toString()
                  .contains(QString::fromStdString(longText)))
      << "what is cut off can be read";
}

TEST(DeviceTable, SaysInItsBodyWhyItIsEmpty) {
  WindowFixture bench(samples::idle());
  bench.window.draw(samples::empty());
  const auto ground = bench.table().palette().color(QPalette::Base);
  EXPECT_TRUE(hasPixel(bench.table().viewport()->grab().toImage(), shadeOf(Tone::gray, ground)));
  EXPECT_EQ(bench.table().accessibleDescription().toStdString(), samples::empty().emptyText);
  QTest::keyClick(&bench.table(), Qt::Key_End);
  EXPECT_TRUE(bench.actions.calls.empty());
  bench.window.draw(samples::idle());
  EXPECT_TRUE(bench.table().accessibleDescription().contains(QStringLiteral("arrow keys")));
}

TEST(DeviceTable, FitsALargeFont) {
  const auto usual = QApplication::font();
  auto large = usual;
  large.setPointSize(20);
  QApplication::setFont(large);
  {
    WindowFixture bench(samples::everyStatus());
    EXPECT_GE(bench.button("upload").height(), bench.button("upload").fontMetrics().height() + 6);
    EXPECT_GE(bench.button("upload").width(), bench.button("upload").sizeHint().width());
    const auto& header = *bench.table().horizontalHeader();
    const auto serialNumber = static_cast<int>(Column::serialNumber);
    const auto serial = bench.table().model()->index(0, serialNumber);
    EXPECT_EQ(serial.data(Qt::FontRole).value<QFont>().resolve(large).pointSize(), 20);
    EXPECT_GE(header.sectionSize(serialNumber),
              bench.table().itemDelegateForIndex(serial)->sizeHint({}, serial).width());
    EXPECT_TRUE(QTest::qWaitFor([&] { return header.height() > 2 * header.fontMetrics().lineSpacing(); }));
    EXPECT_LE(bench.window.minimumSize().width(), bench.window.screen()->availableGeometry().width());
  }
  QApplication::setFont(usual);
}

TEST(ShareOut, NamesGiveWayAndASurplusIsShared) {
  const struct {
    const char* what;
    int room;
    std::array<int, sharingColumns> contents;
    std::array<int, sharingColumns> widths;
  } cases[] = {
      {"the surplus goes to all", 1000, {200, 100, 100, 100, 100}, {272, 182, 182, 182, 182}},
      {"a long name gives way to the serial number", 600, {500, 160, 100, 95, 95}, {150, 160, 100, 95, 95}},
      {"names share what is left for them", 700, {500, 160, 400, 95, 95}, {175, 160, 175, 95, 95}},
      {"nobody goes without", 500, {999, 999, 999, 999, 999}, {90, 140, 90, 90, 90}},
      {"too little for all", 200, {99, 99, 99, 99, 99}, {40, 40, 40, 40, 40}},
  };
  for (const auto& example : cases) {
    std::array<ColumnWish, sharingColumns> wishes;
    for (std::size_t column = 0; column < sharingColumns; ++column) {
      wishes.at(column) = {.content = example.contents.at(column), .title = 110};
    }
    EXPECT_EQ(shareOut(example.room, wishes), example.widths) << example.what;
  }
}

}  // namespace
}  // namespace karvex::ui::qt
