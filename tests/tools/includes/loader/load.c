#include "records/UsbIds.hpp"
#include "loader/load.h"
