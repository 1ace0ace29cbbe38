#include "MIDIKitIO/platform/linux/InputPool.hpp"

#include <sound/asequencer.h>
#include <sys/ioctl.h>

namespace midikit::io::alsa {

std::optional<InputPool> inputPool(int descriptor, int client) {
  snd_seq_client_pool pool{};
  pool.client = client;
  if (::ioctl(descriptor, SNDRV_SEQ_IOCTL_GET_CLIENT_POOL, &pool) < 0 || pool.input_pool <= 0) {
    return std::nullopt;
  }
  return InputPool{.all = pool.input_pool, .free = pool.input_free};
}

}  // namespace midikit::io::alsa
