#pragma once

#include <cstdint>
#include <list>
#include <mutex>
#include <string>
#include <vector>

typedef struct _UMockdevTestbed UMockdevTestbed;

namespace karvex::loader {

/// The far side of one hidraw node: takes the writes, or answers them with an error. Safe to use from the
/// thread of the test while the node is written to.
class hidraw_far_side {
 public:
  /// Gives what write() is to return, or a negative error number.
  long take(std::vector<std::uint8_t> message);

  /// From now on writes fail with this error number; 0: they succeed.
  void fail_with(int error);
  std::vector<std::vector<std::uint8_t>> messages() const;

 private:
  mutable std::mutex mutex_;
  int error_ = 0;
  std::vector<std::vector<std::uint8_t>> messages_;
};

/// A made-up /sys and /dev with USB HID devices, which this process sees instead of the machine's own for as
/// long as the object lives. The process has to run under umockdev's preload library.
class hidraw_tree {
 public:
  hidraw_tree();
  ~hidraw_tree();
  hidraw_tree(const hidraw_tree&) = delete;
  hidraw_tree& operator=(const hidraw_tree&) = delete;

  /// Adds /dev/hidraw`number`. Give each device a number of its own.
  hidraw_far_side& add(int number, std::uint16_t vendor, std::uint16_t product);
  /// The node goes; what is open stays open.
  void remove_node(int number);
  void set_node_mode(int number, unsigned mode);
  /// How many of this process's descriptors are open on the node.
  int open_descriptors(int number) const;

 private:
  void add_to_sysfs(int number, std::uint16_t vendor, std::uint16_t product);
  std::string node_path(int number) const;

  UMockdevTestbed* testbed_;
  std::string root_;
  std::list<hidraw_far_side> far_sides_;
};

/// While it lives, the process acts as a user whom permission bits bind, which they don't do for root.
class ordinary_user {
 public:
  ordinary_user();
  ~ordinary_user();
  ordinary_user(const ordinary_user&) = delete;
  ordinary_user& operator=(const ordinary_user&) = delete;

  /// False if the system does not let root become one.
  bool effective() const { return effective_; }

 private:
  unsigned before_;
  bool effective_;
};

}  // namespace karvex::loader
