#include <upgrade/Alert.hpp>
#include "MIDIKitIO/manager/MIDIManager.hpp"
#include "foundation/run/Timer.hpp"
#include <asio/post.hpp>
