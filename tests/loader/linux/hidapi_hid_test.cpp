#include "loader/platform/linux/hidapi_hid.hpp"

#include <gmock/gmock.h>

#include <cerrno>
#include <functional>
#include <numeric>
#include <optional>

#include "loader/halfkay.hpp"
#include "loader/halfkay_report.hpp"
#include "loader/platform/host.hpp"
#include "tests/loader/linux/hidraw_tree.hpp"

namespace karvex::loader {
namespace {

using std::chrono::milliseconds;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Time stands still but for sleeps.
struct virtual_host {
  std::chrono::nanoseconds now{};
  std::function<void()> after_sleep = [] {};
  std::vector<std::string> log;

  void install() {
    host_calls calls;
    calls.context = this;
    calls.now = [](void* self) { return static_cast<virtual_host*>(self)->now; };
    calls.sleep_for = [](void* self, milliseconds span) {
      static_cast<virtual_host*>(self)->now += span;
      static_cast<virtual_host*>(self)->after_sleep();
    };
    calls.log = [](void* self, const char* text) {
      static_cast<virtual_host*>(self)->log.emplace_back(text);
    };
    install_host(calls);
  }
};

class HidapiHid : public ::testing::Test {
 protected:
  HidapiHid() { host.install(); }
  ~HidapiHid() override { install_host({}); }

  hid_device* find(hid_search expected = hid_search::found) {
    hid_device* device = nullptr;
    EXPECT_EQ(hid.find_first(hid.context, PJRC_VENDOR_ID, halfkay_product_id, &device), expected);
    return device;
  }

  hid_device* find_and_open() {
    hid_device* device = find();
    EXPECT_EQ(hid.open(hid.context, device), hid_access::opened);
    return device;
  }

  hid_delivery send(hid_device* device, const std::vector<std::uint8_t>& report) {
    return hid.set_output_report(hid.context, device, report.data(), report.size());
  }

  virtual_host host;
  hidraw_tree tree;
  const hid_calls hid = hidapi_hid_calls();
};

TEST_F(HidapiHid, FindsNothingAmongOtherDevices) {
  hid_device* const stale = reinterpret_cast<hid_device*>(this);
  hid_device* device = stale;
  EXPECT_EQ(hid.find_first(hid.context, PJRC_VENDOR_ID, halfkay_product_id, &device), hid_search::none);
  EXPECT_EQ(device, nullptr);

  tree.add(0, PJRC_VENDOR_ID, 0x0486);
  tree.add(1, 0x046D, halfkay_product_id);
  device = stale;
  EXPECT_EQ(hid.find_first(hid.context, PJRC_VENDOR_ID, halfkay_product_id, &device), hid_search::none);
  EXPECT_EQ(device, nullptr);
}

TEST_F(HidapiHid, TheFirstBoardListedGetsTheReportWithItsIdInFront) {
  const auto& other = tree.add(0, 0x046D, 0xC077);
  const auto& board = tree.add(1, PJRC_VENDOR_ID, halfkay_product_id);
  const auto& second_board = tree.add(2, PJRC_VENDOR_ID, halfkay_product_id);
  hid_device* device = find_and_open();

  std::vector<std::vector<std::uint8_t>> expected;
  for (const std::size_t length : {std::size_t{130}, longest_report, std::size_t{130}}) {
    std::vector<std::uint8_t> report(length);
    std::iota(report.begin(), report.end(), std::uint8_t{0xFB});
    EXPECT_EQ(send(device, report), hid_delivery::sent);
    report.insert(report.begin(), 0);
    expected.push_back(report);
  }
  EXPECT_EQ(board.messages(), expected);
  EXPECT_THAT(other.messages(), IsEmpty());
  EXPECT_THAT(second_board.messages(), IsEmpty());

  EXPECT_EQ(tree.open_descriptors(1), 1);
  hid.close(hid.context, device);
  EXPECT_EQ(tree.open_descriptors(1), 0);
}

TEST_F(HidapiHid, TellsARefusedReportFromABoardThatLeft) {
  auto& board = tree.add(0, PJRC_VENDOR_ID, halfkay_product_id);
  hid_device* device = find_and_open();
  const std::vector<std::uint8_t> report(longest_report);

  for (const int error : {EPIPE, EPROTO, ETIMEDOUT, EIO, EINTR}) {
    board.fail_with(error);
    EXPECT_EQ(send(device, report), hid_delivery::refused) << error;
  }
  board.fail_with(0);
  EXPECT_EQ(send(device, report), hid_delivery::sent);

  board.fail_with(ENODEV);
  EXPECT_EQ(send(device, report), hid_delivery::gone);
  board.fail_with(EPROTO);
  tree.remove_node(0);
  EXPECT_EQ(send(device, report), hid_delivery::gone);
  hid.close(hid.context, device);
}

TEST_F(HidapiHid, AReportLongerThanTheLongestDoesNotGoOut) {
  const auto& board = tree.add(0, PJRC_VENDOR_ID, halfkay_product_id);
  hid_device* device = find_and_open();
  EXPECT_EQ(send(device, std::vector<std::uint8_t>(longest_report + 1)), hid_delivery::refused);
  EXPECT_THAT(board.messages(), IsEmpty());
  hid.close(hid.context, device);
}

TEST_F(HidapiHid, ABoardThatLeftBeforeTheOpenFailsAtOnceAndTheLogTellsWhy) {
  tree.add(0, PJRC_VENDOR_ID, halfkay_product_id);
  hid_device* device = find();
  tree.remove_node(0);
  EXPECT_EQ(hid.open(hid.context, device), hid_access::failed);
  EXPECT_EQ(host.now, milliseconds(0));
  EXPECT_THAT(host.log, ElementsAre(">>> KARVEX : /dev/hidraw0 : No such file or directory"));
}

/// The node is there, but the system keeps it from this user.
class HidapiHidWithoutPermission : public HidapiHid {
 protected:
  void SetUp() override {
    tree.add(0, PJRC_VENDOR_ID, halfkay_product_id);
    tree.set_node_mode(0, 0000);
    user.emplace();
    if (!user->effective()) {
      GTEST_SKIP() << "permissions don't bind root, and the system doesn't let it become another user";
    }
  }

  /// What happens from outside while the loader sleeps, once the given time is over.
  void at(milliseconds moment, const std::function<void()>& event) {
    host.after_sleep = [this, moment, event, happened = false]() mutable {
      if (host.now >= moment && !happened) {
        happened = true;
        user.reset();
        event();
        user.emplace();
      }
    };
  }

  std::optional<ordinary_user> user;
};

TEST_F(HidapiHidWithoutPermission, ARefusalIsBelievedWhenItLastsASecond) {
  EXPECT_EQ(hid.open(hid.context, find()), hid_access::not_permitted);
  EXPECT_STREQ(hid.refused_node(hid.context), "/dev/hidraw0");
  EXPECT_GE(host.now, milliseconds(1000));
  EXPECT_LE(host.now, milliseconds(1050));
  EXPECT_THAT(host.log, ElementsAre(">>> KARVEX : /dev/hidraw0 : Permission denied"));
}

TEST_F(HidapiHidWithoutPermission, ANodeHandedOverInTimeIsOpened) {
  at(milliseconds(240), [this] { tree.set_node_mode(0, 0666); });
  hid_device* device = find_and_open();
  EXPECT_LE(host.now, milliseconds(300));
  EXPECT_THAT(host.log, IsEmpty());
  hid.close(hid.context, device);
}

TEST_F(HidapiHidWithoutPermission, ABoardThatLeavesMeanwhileIsNoRefusal) {
  at(milliseconds(240), [this] { tree.remove_node(0); });
  EXPECT_EQ(hid.open(hid.context, find()), hid_access::failed);
  EXPECT_LE(host.now, milliseconds(300));
}

}  // namespace
}  // namespace karvex::loader
