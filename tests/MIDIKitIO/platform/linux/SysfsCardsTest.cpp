#include "MIDIKitIO/platform/linux/SysfsCards.hpp"

#include <gmock/gmock.h>
#include <unistd.h>

#include <fstream>

namespace midikit::io::alsa {
namespace {

namespace fs = std::filesystem;

/// A directory like the kernel's, with one card on a USB device's first interface.
class SysfsCardsTest : public testing::Test {
 protected:
  SysfsCardsTest() : root_(testing::TempDir() + "sysfs-cards-" + std::to_string(::getpid())) {
    fs::create_directories(device() / "1-1.2:1.0" / "sound" / "card3");
    fs::create_directory_symlink(device() / "1-1.2:1.0", card() / "device");
    fs::create_directories(root_ / "class");
    fs::create_directory_symlink(card(), root_ / "class" / "card3");
    write(card() / "id", "Board\n");
    write(device() / "idVendor", "16c0\n");
    write(device() / "idProduct", "0485\n");
  }
  ~SysfsCardsTest() override { fs::remove_all(root_); }

  fs::path device() const { return root_ / "devices/usb1/1-1/1-1.2"; }
  fs::path card() const { return device() / "1-1.2:1.0/sound/card3"; }
  static void write(const fs::path& file, std::string_view text) { std::ofstream(file) << text; }
  CardFacts read(int card = 3) const { return readCard(root_ / "class", card); }

  fs::path root_;
};

TEST_F(SysfsCardsTest, FindsTheUsbDeviceAboveTheCard) {
  write(device() / "serial", "12345\n");
  write(device() / "product", "Two\nlines\n");
  const auto facts = read();
  EXPECT_EQ(facts.id, "Board");
  ASSERT_TRUE(facts.usb);
  EXPECT_EQ(facts.usb->vendorId, "16c0");
  EXPECT_EQ(facts.usb->productId, "0485");
  EXPECT_EQ(facts.usb->path, "1-1.2");
  EXPECT_EQ(facts.usb->serialNumber, "12345");
  EXPECT_EQ(facts.usb->product, "Two\nlines");
  EXPECT_EQ(facts.usb->manufacturer, std::nullopt);
}

TEST_F(SysfsCardsTest, WhatIsNotThereIsAbsent) {
  EXPECT_EQ(read(4).id, "");
  EXPECT_FALSE(read(4).usb);
  fs::remove(device() / "idVendor");
  EXPECT_FALSE(read().usb) << "not on USB";
  fs::remove(card() / "device");
  EXPECT_FALSE(read().usb) << "no parent at all";
  EXPECT_EQ(read().id, "Board");
}

TEST_F(SysfsCardsTest, ReadsOnePageAtMost) {
  write(device() / "serial", std::string(100'000, '7'));
  EXPECT_EQ(read().usb->serialNumber, std::string(4096, '7'));
}

}  // namespace
}  // namespace midikit::io::alsa
