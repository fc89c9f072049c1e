// Pieces the fuzz targets share: a checked condition that stops the run, a
// file in memory for entry points that read from a path, and the splitting
// of a path attribute into header and value.
#pragma once

#include "QorBgpCommunity/platform/Types.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <span>
#include <string>

// A broken invariant: names it, then stops with a trap that libFuzzer
// reports as a crash (and keeps the input).
#define QORBGP_FUZZ_CHECK(cond)                                                          \
   do {                                                                                  \
      if (!(cond)) [[unlikely]] {                                                        \
         std::fprintf(stderr, "%s:%d: fuzz check failed: %s\n", __FILE__, __LINE__,      \
                      #cond);                                                            \
         __builtin_trap();                                                               \
      }                                                                                  \
   } while (0)

namespace QorBgpFuzz {

// An anonymous in-memory file (memfd) that can be opened by path, so that
// readers taking a path read the fuzz input without touching the disk. One
// per process; rewritten for every input.
class MemoryFile {
 public:
   MemoryFile() : fd_(memfd_create("qorbgp-fuzz", 0)) {
      if (fd_ < 0) {
         std::perror("memfd_create");
         std::abort();
      }
      path_ = "/proc/self/fd/" + std::to_string(fd_);
   }
   MemoryFile(MemoryFile const&) = delete;
   MemoryFile& operator=(MemoryFile const&) = delete;
   ~MemoryFile() { close(fd_); }

   // Makes `bytes` the whole content; returns the path to open it by.
   std::string const& contentIs(std::span<U8 const> bytes) {
      if (ftruncate(fd_, 0) != 0 ||
          (!bytes.empty() && pwrite(fd_, bytes.data(), bytes.size(), 0) !=
                                static_cast<ssize_t>(bytes.size()))) {
         std::perror("memory file");
         std::abort();
      }
      return path_;
   }
   // Cuts (or extends with zeros) the content to `size` bytes, under any
   // mapping of it that is open.
   void lengthIs(std::size_t size) {
      if (ftruncate(fd_, static_cast<off_t>(size)) != 0) {
         std::perror("memory file");
         std::abort();
      }
   }

 private:
   int fd_;
   std::string path_;
};

// The value of one serialised path attribute: past the flags and type
// octets and the one- or two-octet length (flag 0x10). Empty for text too
// short to hold a header.
inline std::span<U8 const> attributeValue(std::string const& attribute) {
   auto const* bytes = reinterpret_cast<U8 const*>(attribute.data());
   if (attribute.size() < 3) {
      return {};
   }
   std::size_t const header = (bytes[0] & 0x10) != 0 ? 4 : 3;
   if (attribute.size() < header) {
      return {};
   }
   return {bytes + header, attribute.size() - header};
}

} // namespace QorBgpFuzz
