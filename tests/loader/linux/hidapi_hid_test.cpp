#include "loader/platform/linux/hidapi_hid.hpp"

#include <gmock/gmock.h>
#include <linux/hidraw.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <functional>
#include <list>
#include <numeric>

#include "loader/halfkay.hpp"
#include "loader/halfkay_report.hpp"
#include "loader/platform/host.hpp"
#include "tests/device/linux/SysfsTree.hpp"

namespace karvex::loader {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
namespace fs = std::filesystem;

/// What was written to a node, and the error number that the next writes are answered with.
struct far_side {
  std::vector<std::vector<std::uint8_t>> messages;
  int error = 0;
};

gboolean on_ioctl(UMockdevIoctlBase*, UMockdevIoctlClient* client, far_side*) {
  int descriptor_size = 28;
  g_autoptr(UMockdevIoctlData) argument =
      umockdev_ioctl_data_resolve(umockdev_ioctl_client_get_arg(client), 0, sizeof descriptor_size, nullptr);
  umockdev_ioctl_data_update(argument, 0, reinterpret_cast<guint8*>(&descriptor_size),
                             sizeof descriptor_size);
  umockdev_ioctl_client_complete(client, 0, 0);
  return TRUE;
}

gboolean on_write(UMockdevIoctlBase*, UMockdevIoctlClient* client, far_side* side) {
  const UMockdevIoctlData* bytes = umockdev_ioctl_client_get_arg(client);
  if (side->error == 0) {
    side->messages.emplace_back(bytes->data, bytes->data + bytes->data_len);
  }
  umockdev_ioctl_client_complete(client, side->error == 0 ? bytes->data_len : -1, side->error);
  return TRUE;
}

/// Boards on a made-up bus, and a host whose time stands still but for sleeps.
class HidapiHid : public testing::Test {
 protected:
  HidapiHid() {
    install_host({.context = this,
                  .now = [](void* self) { return in(self).now; },
                  .sleep_for = [](void* self, std::chrono::milliseconds span) { in(self).sleep(span); },
                  .log = [](void* self, const char* text) { in(self).log.emplace_back(text); }});
  }
  ~HidapiHid() override { be(0); }
  static HidapiHid& in(void* context) { return *static_cast<HidapiHid*>(context); }

  fs::path node(std::size_t number) const { return tree.root / fmt::format("dev/hidraw{}", number); }
  far_side& add(int vendor, int product) {
    const auto number = sides.size();
    const auto ids =
        fmt::format("HID_ID=0003:{:08X}:{:08X}\nE: HID_NAME=board\nE: HID_UNIQ=", vendor, product);
    const auto device = tree.addUsbDevice(fmt::format("1-{}", number), {});
    const auto parent = tree.add(
        fmt::format("{}/{}", tree.addInterface(device, fmt::format("1-{}:1.0", number)), number), "hid", ids);
    tree.add(fmt::format("{}/hidraw{}", parent, number), "hidraw",
             fmt::format("DEVNAME=hidraw{}\nL: device=..", number));
    std::ofstream(node(number)).flush();
    auto& side = sides.emplace_back();
    auto* handler = umockdev_ioctl_base_new();
    g_signal_connect(handler, "handle-ioctl", G_CALLBACK(on_ioctl), &side);
    g_signal_connect(handler, "handle-write", G_CALLBACK(on_write), &side);
    umockdev_testbed_attach_ioctl(tree.testbed, fmt::format("/dev/hidraw{}", number).c_str(), handler,
                                  nullptr);
    g_object_unref(handler);
    return side;
  }
  hid_device* find(hid_search expected = hid_search::found) {
    auto* device = reinterpret_cast<hid_device*>(this);
    EXPECT_EQ(hid.find_first(hid.context, PJRC_VENDOR_ID, halfkay_product_id, &device), expected);
    return device;
  }
  hid_delivery send(hid_device* device, const std::vector<std::uint8_t>& report) {
    return hid.set_output_report(hid.context, device, report.data(), report.size());
  }
  /// Permission bits don't bind root.
  static bool be(uid_t user) { return ::getuid() != 0 || ::seteuid(user) == 0; }
  void sleep(std::chrono::milliseconds span) {
    now += span;
    if (now == 250ms) {
      be(0);
      after_250_ms();
      be(65534);
    }
  }

  device::SysfsTree tree;
  std::list<far_side> sides;
  std::chrono::nanoseconds now{};
  std::function<void()> after_250_ms = [] {};
  std::vector<std::string> log;
  const hid_calls hid = hidapi_hid_calls();
};

TEST_F(HidapiHid, TheFirstBoardListedGetsTheReportWithItsIdInFront) {
  EXPECT_EQ(find(hid_search::none), nullptr);
  add(PJRC_VENDOR_ID, 0x0486);
  add(0x046D, halfkay_product_id);
  EXPECT_EQ(find(hid_search::none), nullptr);
  auto& board = add(PJRC_VENDOR_ID, halfkay_product_id);
  add(PJRC_VENDOR_ID, halfkay_product_id);
  hid_device* device = find();
  EXPECT_EQ(hid.open(hid.context, device), hid_access::opened);
  std::vector<std::vector<std::uint8_t>> expected;
  for (const std::size_t length : {std::size_t{130}, longest_report}) {
    std::vector<std::uint8_t> report(length);
    std::iota(report.begin(), report.end(), std::uint8_t{0xFB});
    EXPECT_EQ(send(device, report), hid_delivery::sent);
    report.insert(report.begin(), 0);
    expected.push_back(report);
  }
  EXPECT_EQ(send(device, std::vector<std::uint8_t>(longest_report + 1)), hid_delivery::refused);
  EXPECT_EQ(board.messages, expected);
  const std::vector<std::uint8_t> report(130);
  for (const int error : {EPIPE, EPROTO, ETIMEDOUT, EIO, EINTR, ENODEV}) {
    board.error = error;
    EXPECT_EQ(send(device, report), error == ENODEV ? hid_delivery::gone : hid_delivery::refused) << error;
  }
  board.error = EPROTO;
  fs::remove(node(2));
  EXPECT_EQ(send(device, report), hid_delivery::gone);
  const auto descriptors = [] { return std::distance(fs::directory_iterator("/proc/self/fd"), {}); };
  const auto before = descriptors();
  hid.close(hid.context, device);
  EXPECT_LT(descriptors(), before);
}

TEST_F(HidapiHid, ARefusalIsBelievedWhenItLastsASecond) {
  add(PJRC_VENDOR_ID, halfkay_product_id);
  hid_device* device = find();
  fs::remove(node(0));
  EXPECT_EQ(hid.open(hid.context, device), hid_access::failed);
  EXPECT_EQ(now, 0ms) << "a board that has left is no refusal";
  EXPECT_THAT(log, ElementsAre(">>> KARVEX : /dev/hidraw0 : No such file or directory"));

  std::ofstream(node(0)).flush();
  fs::permissions(node(0), fs::perms::none);
  fs::permissions(tree.root, fs::perms(0755));
  fs::permissions(tree.root / "ioctl/dev/hidraw0", fs::perms(0777));
  const std::tuple<std::function<void()>, hid_access, std::chrono::milliseconds> cases[] = {
      {[] {}, hid_access::not_permitted, 1000ms},
      {[this] { fs::permissions(node(0), fs::perms(0666)); }, hid_access::opened, 250ms},
      {[this] { fs::remove(node(0)); }, hid_access::failed, 250ms},
  };
  for (const auto& [happening, access, time] : cases) {
    fs::permissions(node(0), fs::perms::none);
    now = 0ms;
    after_250_ms = happening;
    device = find();
    if (!be(65534)) {
      GTEST_SKIP() << "permissions don't bind root, and the system doesn't let it become another user";
    }
    EXPECT_EQ(hid.open(hid.context, device), access);
    be(0);
    EXPECT_EQ(now, time);
    if (access == hid_access::opened) {
      hid.close(hid.context, device);
    }
  }
  EXPECT_THAT(log, ElementsAre(log.front(), ">>> KARVEX : /dev/hidraw0 : Permission denied", log.front()));
}

}  // namespace
}  // namespace karvex::loader
