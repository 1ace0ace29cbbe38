#pragma once

#include <string>
#include <utility>
#include <vector>

typedef struct _UMockdevTestbed UMockdevTestbed;

namespace karvex::device {

/// A made-up /sys and /dev, which this process sees instead of the machine's own for as long as the object
/// lives. The process has to run under umockdev's preload library.
class SysfsTree {
 public:
  using Entries = std::vector<std::pair<std::string, std::string>>;

  SysfsTree();
  ~SysfsTree();
  SysfsTree(const SysfsTree&) = delete;
  SysfsTree& operator=(const SysfsTree&) = delete;

  /// Each of these gives the new device's path in sysfs. `attributes` are written as the kernel writes them,
  /// with a line end.
  std::string addUsbDevice(const std::string& name, const Entries& attributes);
  std::string addInterface(const std::string& usbDevice, const std::string& name);
  /// `parent` may be empty: a terminal of the machine's own, like ttyS0.
  std::string addTty(const std::string& name, const std::string& parent);

  void remove(const std::string& path);
  /// The directory on disk that is seen as /sys.
  std::string sysDirectory() const;

 private:
  struct Device {
    std::string subsystem;
    std::string name;
    std::string parent;
    Entries attributes;
    Entries properties;
  };

  std::string add(Device device);

  UMockdevTestbed* testbed_;
};

}  // namespace karvex::device
