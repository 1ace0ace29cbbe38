#include "loader/platform/linux/hidapi_hid.hpp"

#include <linux/hidraw.h>
#include <unistd.h>

#include <cerrno>
#include <functional>
#include <list>

#include "loader/halfkay_report.hpp"
#include "tests/device/linux/SysfsTree.hpp"
#include "tests/loader/loader_fixture.hpp"

namespace karvex::loader {
namespace {

using testing::ElementsAre;
namespace fs = std::filesystem;

/// What was written to a node, and the error number that the next writes are answered with.
struct far_side {
  std::vector<std::vector<std::uint8_t>> messages;
  int error = 0;
};

gboolean on_ioctl(UMockdevIoctlBase*, UMockdevIoctlClient* client, far_side*) {
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

/// Boards on a made-up bus.
class HidapiHid : public loader_fixture {
 protected:
  ~HidapiHid() override { be(0); }

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

  device::SysfsTree tree;
  std::list<far_side> sides;
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
  EXPECT_THAT(events, ElementsAre("0 log >>> KARVEX : /dev/hidraw0 : No such file or directory"));

  std::ofstream(node(0)).flush();
  fs::permissions(tree.root, fs::perms(0755));
  fs::permissions(tree.root / "ioctl/dev/hidraw0", fs::perms(0777));
  // What happens after 250 ms, what the opening ends in, when, and what is logged then.
  const std::tuple<std::function<void()>, hid_access, std::chrono::milliseconds, const char*> cases[] = {
      {[] {}, hid_access::not_permitted, 1000ms, "Permission denied"},
      {[this] { fs::permissions(node(0), fs::perms(0666)); }, hid_access::opened, 250ms, nullptr},
      {[this] { fs::remove(node(0)); }, hid_access::failed, 250ms, "No such file or directory"},
  };
  for (const auto& [happening, access, time, reason] : cases) {
    start();
    fs::permissions(node(0), fs::perms::none);
    device = find();
    if (!be(65534)) {
      GTEST_SKIP() << "permissions don't bind root, and the system doesn't let it become another user";
    }
    runtime.globalQueue().postAt(runtime.clock().now() + 250ms, [call = &happening] {
      be(0);
      (*call)();
      be(65534);
    });
    EXPECT_EQ(hid.open(hid.context, device), access);
    be(0);
    EXPECT_STREQ(hid.refused_node(hid.context), "/dev/hidraw0");
    EXPECT_EQ(elapsed(), time);
    EXPECT_EQ(
        fmt::format("{}", fmt::join(events, "|")),
        reason == nullptr ? "" : fmt::format("{} log >>> KARVEX : /dev/hidraw0 : {}", time.count(), reason));
    if (access == hid_access::opened) {
      hid.close(hid.context, device);
    }
  }
}

}  // namespace
}  // namespace karvex::loader
