#include "loader/platform/linux/hidapi_hid.hpp"

#include <hidapi.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <memory>
#include <new>
#include <string>

#include "loader/halfkay_report.hpp"
#include "loader/platform/host.hpp"

namespace karvex::loader {
namespace {

using std::chrono::milliseconds;

/// The kernel makes a new node root's alone, and udevd hands it to the user some 70 to 240 ms later. A
/// refusal is believed only when it outlasts that by a good margin.
constexpr milliseconds patience_with_refusal{1000};
/// Short against the usual 70 ms, and far from keeping the machine busy.
constexpr milliseconds pause_between_opens{50};

/// hidraw takes the report ID in front of the report and strips a 0. A report without it would lose its first
/// byte, and no error would tell.
constexpr std::size_t report_id_size = 1;
constexpr std::uint8_t report_id = 0;

/// What stands behind a hid_device. It has a type of its own, since another platform linked into the same
/// program has its own idea of what a hid_device is.
struct hidraw_node {
  std::string path;
  ::hid_device* handle = nullptr;
  /// Where a report gets its ID in front, so that sending one allocates nothing.
  std::array<std::uint8_t, report_id_size + longest_report> message{};
};

hid_device* as_device(hidraw_node* node) {
  return reinterpret_cast<hid_device*>(node);
}

hidraw_node* as_node(hid_device* device) {
  return reinterpret_cast<hidraw_node*>(device);
}

/// The node that the system refused last. No path of a node is longer; one that is, is cut.
std::array<char, 64> refused_path{};

void remember_refused(const std::string& path) noexcept {
  refused_path.fill('\0');
  path.copy(refused_path.data(), refused_path.size() - 1);
}

hidraw_node* make_node(const char* path) noexcept {
  try {
    return new hidraw_node{.path = path};
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

struct listing_deleter {
  void operator()(hid_device_info* listing) const { hid_free_enumeration(listing); }
};

hid_search find_first(void* /*context*/, std::uint16_t vendor, std::uint16_t product,
                      hid_device** device) noexcept {
  *device = nullptr;
  if (hid_init() != 0) {
    return hid_search::unavailable;
  }
  const std::unique_ptr<hid_device_info, listing_deleter> listing(hid_enumerate(vendor, product));
  if (listing == nullptr) {
    return hid_search::none;
  }
  *device = as_device(make_node(listing->path));
  return hid_search::found;
}

/// Opens the node, waiting for the system to hand it over. Gives 0 or the error number of the last attempt.
int open_patiently(hidraw_node& node) noexcept {
  const auto start = host_now();
  while (true) {
    errno = 0;
    node.handle = hid_open_path(node.path.c_str());
    if (node.handle != nullptr) {
      return 0;
    }
    // hidapi promises nothing about errno, but leaves that of the system call that failed.
    const int error = errno != 0 ? errno : EIO;
    const bool refused = error == EACCES || error == EPERM;
    if (!refused || host_now() - start >= patience_with_refusal) {
      return error;
    }
    host_sleep(pause_between_opens);
  }
}

hid_access open(void* /*context*/, hid_device* device) noexcept {
  std::unique_ptr<hidraw_node> node(as_node(device));
  const int error = open_patiently(*node);
  if (error == 0) {
    static_cast<void>(node.release());
    return hid_access::opened;
  }
  const char* const reason = strerrordesc_np(error);
  host_log(">>> KARVEX : %s : %s", node->path.c_str(), reason != nullptr ? reason : "unknown error");
  if (error != EACCES && error != EPERM) {
    return hid_access::failed;
  }
  remember_refused(node->path);
  return hid_access::not_permitted;
}

void close(void* /*context*/, hid_device* device) noexcept {
  const std::unique_ptr<hidraw_node> node(as_node(device));
  hid_close(node->handle);
}

/// A board that is pulled out while it takes a report gives EPROTO for a while before the kernel says ENODEV;
/// the node in /dev may go in between.
bool has_left(const hidraw_node& node, int error) {
  return error == ENODEV || (::access(node.path.c_str(), F_OK) != 0 && errno == ENOENT);
}

hid_delivery set_output_report(void* /*context*/, hid_device* device, const std::uint8_t* bytes,
                               std::size_t length) noexcept {
  hidraw_node& node = *as_node(device);
  if (length > longest_report) {
    return hid_delivery::refused;
  }
  node.message[0] = report_id;
  std::copy_n(bytes, length, node.message.begin() + report_id_size);
  const std::size_t message_length = report_id_size + length;
  errno = 0;
  const int written = hid_write(node.handle, node.message.data(), message_length);
  const int error = errno;
  if (written >= 0 && static_cast<std::size_t>(written) == message_length) {
    return hid_delivery::sent;
  }
  return has_left(node, error) ? hid_delivery::gone : hid_delivery::refused;
}

}  // namespace

hid_calls hidapi_hid_calls() {
  return {.context = nullptr,
          .find_first = find_first,
          .open = open,
          .close = close,
          .set_output_report = set_output_report,
          .refused_node = [](void*) -> const char* { return refused_path.data(); }};
}

}  // namespace karvex::loader
