#include "device/platform/linux/node.hpp"
#include <QWidget>
#include "rig/VirtualBus.hpp"
#include <hidapi/hidapi.h>
