#pragma once

#include <filesystem>
#include <string_view>
#include <system_error>

namespace karvex::foundation {

/// A new file, for this user only, that is being filled. It goes with the object unless it is kept.
class DownloadFile {
 public:
  /// Throws std::system_error, also if there is something of that name.
  explicit DownloadFile(std::filesystem::path path);
  ~DownloadFile();
  DownloadFile(const DownloadFile&) = delete;
  DownloadFile& operator=(const DownloadFile&) = delete;

  std::error_code write(std::string_view bytes) const;

  /// Ends the writing. The file stays, unless there is an error: some file systems tell only now that the
  /// disk is full.
  std::error_code keep();

  const std::filesystem::path& path() const { return path_; }

 private:
  std::error_code close();

  std::filesystem::path path_;
  int descriptor_;
  bool isKept_ = false;
};

}  // namespace karvex::foundation
