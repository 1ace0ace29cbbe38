#include "tests/loader/linux/hidraw_tree.hpp"

#include <fmt/format.h>
#include <linux/hidraw.h>
#include <sys/ioctl.h>
#include <umockdev.h>
#include <unistd.h>

#include <exception>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <system_error>

namespace karvex::loader {
namespace {

using owned_text = std::unique_ptr<gchar, decltype(&g_free)>;

constexpr const char* far_side_key = "far-side";

gboolean on_ioctl(UMockdevIoctlBase*, UMockdevIoctlClient* client) {
  if (umockdev_ioctl_client_get_request(client) != HIDIOCGRDESCSIZE) {
    return FALSE;
  }
  int descriptor_size = 28;
  g_autoptr(UMockdevIoctlData) argument =
      umockdev_ioctl_data_resolve(umockdev_ioctl_client_get_arg(client), 0, sizeof descriptor_size, nullptr);
  umockdev_ioctl_data_update(argument, 0, reinterpret_cast<guint8*>(&descriptor_size),
                             sizeof descriptor_size);
  umockdev_ioctl_client_complete(client, 0, 0);
  return TRUE;
}

gboolean on_write(UMockdevIoctlBase* self, UMockdevIoctlClient* client) {
  auto* far_side = static_cast<hidraw_far_side*>(g_object_get_data(G_OBJECT(self), far_side_key));
  const UMockdevIoctlData* bytes = umockdev_ioctl_client_get_arg(client);
  const long result = far_side->take({bytes->data, bytes->data + bytes->data_len});
  umockdev_ioctl_client_complete(client, result < 0 ? -1 : result,
                                 result < 0 ? static_cast<int>(-result) : 0);
  return TRUE;
}

void set_up_handler_class(gpointer handler_class, gpointer /*data*/) {
  auto* base = static_cast<UMockdevIoctlBaseClass*>(handler_class);
  base->handle_ioctl = on_ioctl;
  base->handle_write = on_write;
}

GType handler_type() {
  static const GType type = g_type_register_static_simple(
      UMOCKDEV_TYPE_IOCTL_BASE, "KarvexHidraw", sizeof(UMockdevIoctlBaseClass), set_up_handler_class,
      sizeof(UMockdevIoctlBase), nullptr, static_cast<GTypeFlags>(0));
  return type;
}

/// A device to be; attributes and properties are names and values in turn.
struct sysfs_entry {
  const char* subsystem;
  std::string name;
  const gchar* parent;
  std::vector<std::string> attributes;
  std::vector<std::string> properties;
};

std::vector<gchar*> null_ended(std::vector<std::string>& texts) {
  std::vector<gchar*> list;
  for (auto& text : texts) {
    list.push_back(text.data());
  }
  list.push_back(nullptr);
  return list;
}

/// Gives the device's path in sysfs.
owned_text add_device(UMockdevTestbed* testbed, sysfs_entry entry) {
  auto attributes = null_ended(entry.attributes);
  auto properties = null_ended(entry.properties);
  return {umockdev_testbed_add_devicev(testbed, entry.subsystem, entry.name.c_str(), entry.parent,
                                       attributes.data(), properties.data()),
          g_free};
}

}  // namespace

long hidraw_far_side::take(std::vector<std::uint8_t> message) {
  const std::lock_guard lock(mutex_);
  if (error_ != 0) {
    return -error_;
  }
  messages_.push_back(std::move(message));
  return static_cast<long>(messages_.back().size());
}

void hidraw_far_side::fail_with(int error) {
  const std::lock_guard lock(mutex_);
  error_ = error;
}

std::vector<std::vector<std::uint8_t>> hidraw_far_side::messages() const {
  const std::lock_guard lock(mutex_);
  return messages_;
}

hidraw_tree::hidraw_tree() : testbed_(umockdev_testbed_new()) {
  if (umockdev_in_mock_environment() == FALSE) {
    g_object_unref(testbed_);
    throw std::runtime_error("to be run under umockdev-wrapper");
  }
  root_ = owned_text(umockdev_testbed_get_root_dir(testbed_), g_free).get();
  std::filesystem::create_directories(root_ + "/dev");
  std::filesystem::permissions(root_, std::filesystem::perms(0755));  // an ordinary user may look, as in /dev
}

hidraw_tree::~hidraw_tree() {
  g_object_unref(testbed_);
}

hidraw_far_side& hidraw_tree::add(int number, std::uint16_t vendor, std::uint16_t product) {
  add_to_sysfs(number, vendor, product);
  hidraw_far_side& far_side = far_sides_.emplace_back();
  const std::unique_ptr<void, decltype(&g_object_unref)> handler(g_object_new(handler_type(), nullptr),
                                                                 g_object_unref);
  g_object_set_data(G_OBJECT(handler.get()), far_side_key, &far_side);
  const std::string node = fmt::format("/dev/hidraw{}", number);
  if (umockdev_testbed_attach_ioctl(testbed_, node.c_str(), UMOCKDEV_IOCTL_BASE(handler.get()), nullptr) ==
      FALSE) {
    throw std::runtime_error("no hidraw node to be had");
  }
  // The socket that carries the node's requests; a user who may open the node may talk to it.
  std::filesystem::permissions(root_ + "/ioctl" + node, std::filesystem::perms(0777));
  return far_side;
}

void hidraw_tree::add_to_sysfs(int number, std::uint16_t vendor, std::uint16_t product) {
  const std::string port = fmt::format("1-{}", number + 1);
  const std::string hid_name = fmt::format("0003:{:04X}:{:04X}.{:04X}", vendor, product, number + 1);
  const std::string node_name = fmt::format("hidraw{}", number);
  const auto usb = add_device(testbed_, {.subsystem = "usb",
                                         .name = port,
                                         .parent = nullptr,
                                         .attributes = {"idVendor", fmt::format("{:04x}\n", vendor),
                                                        "idProduct", fmt::format("{:04x}\n", product)},
                                         .properties = {"DEVTYPE", "usb_device"}});
  const auto interface = add_device(testbed_, {.subsystem = "usb",
                                               .name = port + ":1.0",
                                               .parent = usb.get(),
                                               .attributes = {"bInterfaceNumber", "00\n"},
                                               .properties = {"DEVTYPE", "usb_interface"}});
  const auto hid =
      add_device(testbed_, {.subsystem = "hid",
                            .name = hid_name,
                            .parent = interface.get(),
                            .attributes = {},
                            .properties = {"HID_ID", fmt::format("0003:{:08X}:{:08X}", vendor, product),
                                           "HID_NAME", "board", "HID_UNIQ", ""}});
  const auto node = add_device(testbed_, {.subsystem = "hidraw",
                                          .name = node_name,
                                          .parent = hid.get(),
                                          .attributes = {"dev", fmt::format("250:{}\n", number)},
                                          .properties = {"DEVNAME", node_name}});
  umockdev_testbed_set_attribute_link(testbed_, node.get(), "device", ("../../" + hid_name).c_str());
  std::ofstream(node_path(number)).flush();
}

void hidraw_tree::remove_node(int number) {
  std::filesystem::remove(node_path(number));
}

void hidraw_tree::set_node_mode(int number, unsigned mode) {
  std::filesystem::permissions(node_path(number), std::filesystem::perms(mode));
}

int hidraw_tree::open_descriptors(int number) const {
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code vanished;
    count += std::filesystem::read_symlink(entry.path(), vanished) == node_path(number) ? 1 : 0;
  }
  return count;
}

std::string hidraw_tree::node_path(int number) const {
  return fmt::format("{}/dev/hidraw{}", root_, number);
}

ordinary_user::ordinary_user() : before_(geteuid()), effective_(true) {
  constexpr uid_t nobody = 65534;
  if (before_ == 0) {
    effective_ = seteuid(nobody) == 0;
  }
}

ordinary_user::~ordinary_user() {
  if (seteuid(before_) != 0) {
    std::terminate();
  }
}

}  // namespace karvex::loader
