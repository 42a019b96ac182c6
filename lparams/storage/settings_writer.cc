#include "lparams/storage/settings_writer.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <fstream>
#include <locale>
#include <memory>

#include "lparams/interface/file_names.h"

namespace LPARAMS::Server {
namespace {

constexpr const char* WRITE_FAILED = "write failed: ";
constexpr const char* WRITE_FAILED_REASON = ", error: ";
constexpr const char* RENAME_FAILED = "rename failed: ";
constexpr int WRITE_ATTEMPTS = 3;

/// A file that is there already keeps its mode: only a new one has to be private before the stream
/// opens it.
void createPrivate(const std::string& path) {
  const int file = ::open(path.c_str(), O_RDONLY | O_CREAT | O_EXCL | O_APPEND, 0600);
  if (file >= 0) (void)::close(file);
}

/// Returns the stream with the whole text flushed, or throws what the stream throws.
std::unique_ptr<std::ofstream> writeText(ParamGroup& root, const std::string& path) {
  auto stream = std::make_unique<std::ofstream>();
  stream->imbue(std::locale::classic());
  stream->exceptions(std::ios::badbit | std::ios::failbit | std::ios::eofbit);
  stream->open(path, std::ios::out | std::ios::trunc);
  (void)root.ParamGroup::save(*stream, 0);
  stream->flush();
  return stream;
}

/// True when the text is in the file. Tries again at once: there is nothing to wait for.
bool writeTemporary(ParamGroup& root, const std::string& path, std::string* error) {
  for (int attempt = 1;; ++attempt) {
    try {
      const auto stream = writeText(root, path);
      stream->exceptions(std::ios::goodbit);  // a failure to close is of no interest
      stream->close();
      return true;
    } catch (const std::exception& failure) {
      if (attempt < WRITE_ATTEMPTS) continue;
      if (error != nullptr) {
        error->append(WRITE_FAILED).append(path).append(WRITE_FAILED_REASON).append(failure.what());
      }
      return false;
    }
  }
}

}  // namespace

WriteOutcome writeSettingsFile(ParamGroup& root, const std::string& path, std::string* error) {
  const std::string temporary = path + TEMPORARY_SUFFIX;
  createPrivate(temporary);
  if (!writeTemporary(root, temporary, error)) return WriteOutcome::WriteFailed;

  // Kept oddity, for whoever must not lose the file: the old one is removed before the new one
  // takes its place, so a rename that fails leaves neither under the name.
  (void)std::remove(path.c_str());
  if (std::rename(temporary.c_str(), path.c_str()) != 0) {
    if (error != nullptr) error->append(RENAME_FAILED).append(temporary);
    return WriteOutcome::RenameFailed;
  }
  return WriteOutcome::Written;
}

}  // namespace LPARAMS::Server
