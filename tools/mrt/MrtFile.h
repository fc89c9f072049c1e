// Byte streams over plain, gzip, bzip2, xz and zstd files for the MRT reader
// and writer. An input's compression is found from its first bytes, never its
// name, and inputs are read front to back only, so pipes and standard input
// read like files.
// Private to the qorbgp-mrt library.
#pragma once

#include "tools/mrt/MrtReader.h"

#include <cstddef>
#include <memory>
#include <span>
#include <string>

namespace QorBgpTools::mrt::detail {

// The decompressed content of a file, read front to back. Owns the file
// handle; not thread-safe.
class InputFile {
 public:
   // Standard input when `path` is "-". nullptr with `*error` set when the
   // file cannot be opened or read, or is compressed in a format not read here.
   static std::unique_ptr<InputFile> open(std::string const& path, std::string* error);
   virtual ~InputFile();

   // Fills `out` as far as the data goes; a short count means the end of the
   // data, where fault() tells a clean end (empty) from a damaged or cut-off
   // compressed stream or a read error.
   virtual std::size_t read(std::span<U8> out) = 0;
   // Bytes of the file itself consumed so far (compressed bytes for a
   // compressed file), for progress reports; may run ahead of read() by a buffer.
   virtual U64 consumed() const = 0;

   Compression compression() const { return compression_; }
   U64 size() const { return size_; } // 0 when not a regular file (a pipe)
   std::string const& fault() const { return fault_; }

 protected:
   InputFile(Compression compression, U64 size) : compression_(compression), size_(size) {}
   std::string fault_;

 private:
   Compression compression_;
   U64 size_;
};

// A file written front to back, compressed as chosen at creation. Owns the
// file handle; not thread-safe.
class OutputFile {
 public:
   // nullptr with `*error` set when the file cannot be created.
   static std::unique_ptr<OutputFile> create(std::string const& path, Compression compression,
                                             std::string* error);
   virtual ~OutputFile();

   // False once any write has failed; later writes do nothing.
   virtual bool write(std::span<const U8> bytes) = 0;
   // Flushes and closes; false with `*error` set when anything since creation
   // failed. Later calls return true and do nothing.
   virtual bool close(std::string* error) = 0;
};

} // namespace QorBgpTools::mrt::detail
