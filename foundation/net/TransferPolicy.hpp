#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <optional>

namespace karvex::foundation {

/// Everything that decides how the program talks to the network. The defaults are what users get; the rig and
/// the tests change single fields.
struct TransferPolicy {
  /// A transfer in which nothing has moved for this long, in either direction, has failed.
  std::chrono::milliseconds idleTimeOut{60'000};
  /// A transfer that takes longer than this has failed, whatever moves: a server that sends a byte now and
  /// then must not keep the program for ever. The largest download is through by then at 75 KiB a second.
  std::chrono::milliseconds longestTransfer{15 * 60'000};
  /// Time to resolve the name, connect and shake hands; an address that nobody answers at must not cost a
  /// minute.
  std::chrono::milliseconds connectTimeOut{20'000};
  /// Bytes. A list of a thousand devices has some 400 KiB.
  std::size_t largestAnswer = 4 * 1024 * 1024;
  /// Bytes. The largest target's flash as Intel HEX text has some 45 MiB.
  std::size_t largestDownload = 64 * 1024 * 1024;
  long mostRedirects = 5;
  /// True: a proxy that the environment names is used, as libcurl has it. False: it is passed by, as it must
  /// be for a server inside this program.
  bool usesProxy = true;
  /// A file of certificate authorities (PEM) to trust instead of the system's.
  std::optional<std::filesystem::path> certificateAuthorities;
};

}  // namespace karvex::foundation
