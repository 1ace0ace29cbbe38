#include <libudev.h>
#include "device/platform/linux/node.hpp"
#include "libudev.h"
