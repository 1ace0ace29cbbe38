#include <libudev.h>
#include "device/platform/linux/node.hpp"
#include "loader/load.hpp"
#include "neighbour.hpp"
