#include "tools/mrt/MrtFile.h"

#include "tools/mrt/MrtWire.h"

#include <bzlib.h>
#include <sys/stat.h>
#include <zlib.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>

namespace QorBgpTools::mrt::detail {

namespace {

constexpr U8 kGzipMagic[] = {0x1f, 0x8b};
constexpr U8 kBzip2Magic[] = {'B', 'Z', 'h'};
constexpr unsigned kGzipBufferBytes = 128 * 1024;
constexpr std::size_t kBzip2InputBytes = 64 * 1024;
constexpr int kBzip2BlockSize = 9; // in 100 kB units, the bzip2 tool's default

std::string systemError(char const* what, std::string const& path) {
   return cat(what, " \"", path, "\": ", std::strerror(errno));
}

class PlainInput final : public InputFile {
 public:
   PlainInput(std::FILE* file, U64 size) : InputFile(Compression::none, size), file_(file) {}
   ~PlainInput() override { std::fclose(file_); }

   std::size_t read(std::span<U8> out) override {
      std::size_t got = std::fread(out.data(), 1, out.size(), file_);
      consumed_ += got;
      if (got < out.size() && std::ferror(file_) && fault_.empty()) {
         fault_ = "read error";
      }
      return got;
   }
   U64 consumed() const override { return consumed_; }

 private:
   std::FILE* file_;
   U64 consumed_ = 0;
};

// zlib's gz* layer reads concatenated gzip members as one stream.
class GzipInput final : public InputFile {
 public:
   GzipInput(gzFile file, U64 size) : InputFile(Compression::gzip, size), file_(file) {}
   ~GzipInput() override { gzclose(file_); }

   std::size_t read(std::span<U8> out) override {
      std::size_t done = 0;
      while (done < out.size()) {
         auto want = static_cast<unsigned>(std::min<std::size_t>(out.size() - done, INT_MAX));
         int got = gzread(file_, out.data() + done, want);
         if (got > 0) {
            done += static_cast<std::size_t>(got);
         }
         if (got < static_cast<int>(want)) {
            int code = Z_OK;
            gzerror(file_, &code);
            if (code == Z_BUF_ERROR) {
               fault_ = "gzip: stream cut short";
            } else if (code != Z_OK) {
               // zlib's message names the file; callers know it already.
               fault_ = code == Z_ERRNO ? "read error" : "gzip: damaged data";
            }
            break;
         }
      }
      return done;
   }
   U64 consumed() const override {
      auto offset = gzoffset(file_);
      return offset < 0 ? 0 : static_cast<U64>(offset);
   }

 private:
   gzFile file_;
};

// Decodes with libbz2's stream interface rather than BZ2_bzRead: it keeps
// every byte decoded before a cut-off stream ends (BZ2_bzRead drops the
// partly filled buffer of its failing call), and it goes on into the streams
// that parallel compressors concatenate.
class Bzip2Input final : public InputFile {
 public:
   Bzip2Input(std::FILE* file, U64 size) : InputFile(Compression::bzip2, size), file_(file) {}
   ~Bzip2Input() override {
      if (streamOpen_) {
         BZ2_bzDecompressEnd(&stream_);
      }
      std::fclose(file_);
   }

   std::size_t read(std::span<U8> out) override {
      std::size_t done = 0;
      while (done < out.size() && !finished_) {
         if (stream_.avail_in == 0 && !fileEnded_) {
            std::size_t got = std::fread(input_.data(), 1, input_.size(), file_);
            consumed_ += got;
            fileEnded_ = got == 0;
            if (fileEnded_ && std::ferror(file_)) {
               return finish(done, "read error");
            }
            stream_.next_in = input_.data();
            stream_.avail_in = static_cast<unsigned>(got);
         }
         if (!streamOpen_) {
            if (stream_.avail_in == 0 && fileEnded_) {
               finished_ = true; // clean end after the last stream
               break;
            }
            // Init leaves next_in/avail_in alone, so the next stream's bytes stay queued.
            if (BZ2_bzDecompressInit(&stream_, 0, 0) != BZ_OK) {
               return finish(done, "bzip2: cannot start decoding");
            }
            streamOpen_ = true;
         }
         stream_.next_out = reinterpret_cast<char*>(out.data() + done);
         stream_.avail_out =
            static_cast<unsigned>(std::min<std::size_t>(out.size() - done, UINT_MAX));
         int code = BZ2_bzDecompress(&stream_);
         done = out.size() - stream_.avail_out;
         if (code == BZ_STREAM_END) {
            BZ2_bzDecompressEnd(&stream_);
            streamOpen_ = false;
         } else if (code != BZ_OK) {
            return finish(done, cat("bzip2: damaged data (libbz2 code ", -code, ")"));
         } else if (stream_.avail_out > 0 && stream_.avail_in == 0 && fileEnded_) {
            return finish(done, "bzip2: stream cut short");
         }
      }
      return done;
   }
   U64 consumed() const override { return consumed_; }

 private:
   std::size_t finish(std::size_t done, std::string fault) {
      finished_ = true;
      fault_ = std::move(fault);
      return done;
   }

   std::FILE* file_;
   bz_stream stream_{};
   std::array<char, kBzip2InputBytes> input_{};
   bool streamOpen_ = false; // stream_ holds a decoder (between Init and End)
   bool fileEnded_ = false;
   bool finished_ = false; // nothing more will come, cleanly or by fault_
   U64 consumed_ = 0;
};

template <std::size_t N>
bool startsWith(std::span<const U8> head, U8 const (&magic)[N]) {
   return head.size() >= N && std::memcmp(head.data(), magic, N) == 0;
}

class PlainOutput final : public OutputFile {
 public:
   explicit PlainOutput(std::FILE* file) : file_(file) {}
   ~PlainOutput() override {
      if (file_) {
         std::fclose(file_);
      }
   }
   bool write(std::span<const U8> bytes) override {
      failed_ =
         failed_ || !file_ || std::fwrite(bytes.data(), 1, bytes.size(), file_) != bytes.size();
      return !failed_;
   }
   bool close(std::string* error) override {
      if (!file_) {
         return true;
      }
      failed_ = std::fclose(file_) != 0 || failed_;
      file_ = nullptr;
      if (failed_ && error) {
         *error = "write error";
      }
      return !failed_;
   }

 private:
   std::FILE* file_;
   bool failed_ = false;
};

class GzipOutput final : public OutputFile {
 public:
   explicit GzipOutput(gzFile file) : file_(file) {}
   ~GzipOutput() override {
      if (file_) {
         gzclose(file_);
      }
   }
   bool write(std::span<const U8> bytes) override {
      // gzwrite takes an unsigned count; the records written here are far smaller.
      failed_ =
         failed_ || !file_ ||
         (!bytes.empty() && gzwrite(file_, bytes.data(), static_cast<unsigned>(bytes.size())) !=
                               static_cast<int>(bytes.size()));
      return !failed_;
   }
   bool close(std::string* error) override {
      if (!file_) {
         return true;
      }
      failed_ = gzclose(file_) != Z_OK || failed_;
      file_ = nullptr;
      if (failed_ && error) {
         *error = "gzip: write error";
      }
      return !failed_;
   }

 private:
   gzFile file_;
   bool failed_ = false;
};

class Bzip2Output final : public OutputFile {
 public:
   Bzip2Output(std::FILE* file, BZFILE* bz) : file_(file), bz_(bz) {}
   ~Bzip2Output() override { close(nullptr); }
   bool write(std::span<const U8> bytes) override {
      if (failed_ || !bz_ || bytes.empty()) {
         return !failed_;
      }
      int code = BZ_OK;
      // BZ2_bzWrite does not modify its input despite the non-const parameter.
      BZ2_bzWrite(&code, bz_, const_cast<U8*>(bytes.data()), static_cast<int>(bytes.size()));
      failed_ = code != BZ_OK;
      return !failed_;
   }
   bool close(std::string* error) override {
      if (!file_) {
         return true;
      }
      int code = BZ_OK;
      BZ2_bzWriteClose(&code, bz_, failed_ ? 1 : 0, nullptr, nullptr);
      failed_ = code != BZ_OK || std::fclose(file_) != 0 || failed_;
      file_ = nullptr;
      bz_ = nullptr;
      if (failed_ && error) {
         *error = "bzip2: write error";
      }
      return !failed_;
   }

 private:
   std::FILE* file_;
   BZFILE* bz_;
   bool failed_ = false;
};

} // namespace

InputFile::~InputFile() = default;
OutputFile::~OutputFile() = default;

std::unique_ptr<InputFile> InputFile::open(std::string const& path, std::string* error) {
   std::FILE* file = std::fopen(path.c_str(), "rb");
   if (!file) {
      *error = systemError("cannot open", path);
      return nullptr;
   }
   struct stat info {};
   U64 size = fstat(fileno(file), &info) == 0 ? static_cast<U64>(info.st_size) : 0;
   std::array<U8, 3> head{};
   std::size_t got = std::fread(head.data(), 1, head.size(), file);
   if (std::ferror(file) || std::fseek(file, 0, SEEK_SET) != 0) {
      *error = systemError("cannot read", path);
      std::fclose(file);
      return nullptr;
   }
   auto magic = std::span<const U8>(head).first(got);
   if (startsWith(magic, kBzip2Magic)) {
      return std::make_unique<Bzip2Input>(file, size);
   }
   if (!startsWith(magic, kGzipMagic)) {
      return std::make_unique<PlainInput>(file, size);
   }
   std::fclose(file);
   gzFile gz = gzopen(path.c_str(), "rb");
   if (!gz) {
      *error = systemError("cannot open", path);
      return nullptr;
   }
   gzbuffer(gz, kGzipBufferBytes);
   return std::make_unique<GzipInput>(gz, size);
}

std::unique_ptr<OutputFile> OutputFile::create(std::string const& path, Compression compression,
                                               std::string* error) {
   if (compression == Compression::gzip) {
      gzFile gz = gzopen(path.c_str(), "wb");
      if (!gz) {
         *error = systemError("cannot create", path);
         return nullptr;
      }
      return std::make_unique<GzipOutput>(gz);
   }
   std::FILE* file = std::fopen(path.c_str(), "wb");
   if (!file) {
      *error = systemError("cannot create", path);
      return nullptr;
   }
   if (compression == Compression::none) {
      return std::make_unique<PlainOutput>(file);
   }
   int code = BZ_OK;
   BZFILE* bz = BZ2_bzWriteOpen(&code, file, kBzip2BlockSize, 0, 0);
   if (code != BZ_OK) {
      std::fclose(file);
      *error = cat("bzip2: cannot start compressing \"", path, "\"");
      return nullptr;
   }
   return std::make_unique<Bzip2Output>(file, bz);
}

} // namespace QorBgpTools::mrt::detail
