#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

namespace karvex::tests {

/// A USB device that the kernel's gadget driver plays, on the kernel's own dummy USB controller.
class UsbBoard {
 public:
  struct Description {
    std::string serialNumber;
    int plug = 0;  ///< 0 or 1
    std::string product = "Board of Test";
    std::string vendorId = "0x1d6b";
    std::string productId = "0x0104";
    std::string function = "midi.usb0";
  };

  static bool isPossible() {
    return std::filesystem::exists(root) && std::filesystem::exists("/sys/class/udc/dummy_udc.1");
  }

  explicit UsbBoard(const Description& description)
      : function_(description.function),
        gadget_(root / ("karvex" + std::to_string(description.plug))),
        udc_("dummy_udc." + std::to_string(description.plug)) {
    std::filesystem::create_directories(gadget_ / "strings/0x409");
    std::filesystem::create_directories(gadget_ / "configs/c.1");
    std::filesystem::create_directories(gadget_ / "functions" / function_);
    write("idVendor", description.vendorId);
    write("idProduct", description.productId);
    write("strings/0x409/serialnumber", description.serialNumber);
    write("strings/0x409/manufacturer", "Kernel Test");
    write("strings/0x409/product", description.product);
    if (function_ == "midi.usb0") {
      write("functions/midi.usb0/id", "boardside");
    }
    std::filesystem::create_directory_symlink(gadget_ / "functions" / function_,
                                              gadget_ / "configs/c.1" / function_);
  }
  ~UsbBoard() {
    std::error_code ignored;
    unplug();
    for (const auto& part : {"configs/c.1/" + function_, std::string("configs/c.1"), "functions/" + function_,
                             std::string("strings/0x409"), std::string()}) {
      std::filesystem::remove(gadget_ / part, ignored);
    }
  }
  UsbBoard(const UsbBoard&) = delete;
  UsbBoard& operator=(const UsbBoard&) = delete;

  void plugIn() const { write("UDC", udc_); }
  void unplug() const { std::ofstream(gadget_ / "UDC") << '\n'; }

 private:
  void write(const std::string& file, const std::string& text) const {
    std::ofstream stream(gadget_ / file);
    stream << text << '\n';
    stream.flush();
    EXPECT_TRUE(stream.good()) << file;
  }

  static inline const std::filesystem::path root = "/sys/kernel/config/usb_gadget";
  const std::string function_;
  const std::filesystem::path gadget_;
  const std::string udc_;
};

}  // namespace karvex::tests
