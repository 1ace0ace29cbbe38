#include "device/platform/linux/node.hpp"
#include <libudev.h>
#include "loader/load.hpp"
#include "neighbour.hpp"
