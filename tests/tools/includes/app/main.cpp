#include <hidapi/hidapi.h>
#include <QWidget>
#include "device/platform/linux/node.hpp"
#include "rig/VirtualBus.hpp"
