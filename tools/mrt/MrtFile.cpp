#include "tools/mrt/MrtFile.h"

#include "tools/mrt/MrtWire.h"

#include <bzlib.h>
#include <isa-l/igzip_lib.h>
#include <lzma.h>
#include <sys/stat.h>
#include <zlib.h>
#include <zstd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

namespace QorBgpTools::mrt::detail {

namespace {

constexpr U8 kGzipMagic[] = {0x1f, 0x8b};
constexpr U8 kBzip2Magic[] = {'B', 'Z', 'h'};
constexpr U8 kXzMagic[] = {0xfd, '7', 'z', 'X', 'Z', 0x00};
constexpr U8 kZstdMagic[] = {0x28, 0xb5, 0x2f, 0xfd};
constexpr std::size_t kInputBytes = 128 * 1024;
// Decompressed bytes handed from the decoding thread to the reader at a
// time, and how many such chunks it may run ahead: enough to ride out a
// bzip2 block (900 kB of output at once), little memory.
constexpr std::size_t kAheadChunkBytes = 256 * 1024;
constexpr std::size_t kAheadChunks = 6;
constexpr int kBzip2BlockSize = 9; // in 100 kB units, the bzip2 tool's default
constexpr U32 kXzPreset = 6;       // the xz tool's default
constexpr int kZstdLevel = 3;      // the zstd tool's default
// What an xz stream may make the decoder allocate: xz -9 needs 65 MiB; a
// header asking for gigabytes is refused instead of allocated.
constexpr U64 kXzMemoryLimit = U64{512} << 20;

// Formats recognised by their first bytes that are not read here, so that
// such a file is refused by name instead of read as damaged MRT records.
struct Unsupported {
   std::span<const U8> magic;
   char const* name;
};
constexpr U8 kZipMagic[] = {'P', 'K', 0x03, 0x04};
constexpr U8 kSevenZipMagic[] = {'7', 'z', 0xbc, 0xaf, 0x27, 0x1c};
constexpr U8 kLz4Magic[] = {0x04, 0x22, 0x4d, 0x18};
constexpr U8 kLzipMagic[] = {'L', 'Z', 'I', 'P'};
constexpr U8 kCompressMagic[] = {0x1f, 0x9d};
constexpr Unsupported kUnsupported[] = {{kZipMagic, "zip"},
                                        {kSevenZipMagic, "7z"},
                                        {kLz4Magic, "lz4"},
                                        {kLzipMagic, "lzip"},
                                        {kCompressMagic, "compress (.Z)"}};

std::string systemError(char const* what, std::string const& path) {
   return cat(what, " \"", path, "\": ", std::strerror(errno));
}

bool startsWith(std::span<const U8> head, std::span<const U8> magic) {
   return head.size() >= magic.size() && std::memcmp(head.data(), magic.data(), magic.size()) == 0;
}

// The undecoded bytes of a file or of standard input, read front to back in
// chunks and never sought, so that pipes read like files. The first chunk is
// read at opening, for the compression to be told from its first bytes.
class RawInput {
 public:
   RawInput(std::FILE* file, bool owned) : file_(file), owned_(owned), buffer_(kInputBytes) {}
   ~RawInput() {
      if (owned_) {
         std::fclose(file_);
      }
   }
   RawInput(RawInput const&) = delete;
   RawInput& operator=(RawInput const&) = delete;

   // Reads the next chunk once the current one is used up; false at the end
   // of the file or on a read error (then failed() is true).
   bool refill() {
      if (!pending_.empty() || ended_) {
         return !pending_.empty();
      }
      std::size_t got = std::fread(buffer_.data(), 1, buffer_.size(), file_);
      consumed_ += got;
      pending_ = std::span<const U8>(buffer_).first(got);
      ended_ = got < buffer_.size();
      failed_ = ended_ && std::ferror(file_);
      return got > 0;
   }
   // The bytes read and not yet taken; callers shorten it as they take them.
   std::span<const U8>& pending() { return pending_; }
   // True once the file has no more bytes (and pending() may still hold some).
   bool ended() const { return ended_; }
   bool failed() const { return failed_; }
   U64 consumed() const { return consumed_; }

 private:
   std::FILE* file_;
   bool owned_; // false for standard input
   std::vector<U8> buffer_;
   std::span<const U8> pending_;
   bool ended_ = false;
   bool failed_ = false;
   U64 consumed_ = 0;
};

// The read loop shared by every format: takes the raw bytes chunk by chunk
// and hands them to the format's decoding step until `out` is full or the
// data ends. A cut-off stream keeps every byte decoded before the cut.
class DecodingInput : public InputFile {
 public:
   DecodingInput(Compression compression, U64 size, std::unique_ptr<RawInput> raw)
       : InputFile(compression, size), raw_(std::move(raw)) {}

   std::size_t read(std::span<U8> out) override {
      std::size_t done = 0;
      while (done < out.size() && !finished_) {
         raw_->refill();
         if (raw_->failed()) {
            fault_ = "read error";
            finished_ = true;
            break;
         }
         std::span<U8> window = out.subspan(done);
         finished_ = step(raw_->pending(), window, raw_->ended()) == Step::end;
         done = out.size() - window.size();
      }
      return done;
   }
   U64 consumed() const override { return raw_->consumed(); }

 protected:
   enum class Step { more, end };
   // Decodes from the front of `in` into the front of `out`, shortening both
   // by what it took and gave. `last`: no bytes follow those of `in`. Returns
   // end when the data is over: cleanly, or with fault_ set when it is
   // damaged or cut short. Must make progress or return end when `last`.
   virtual Step step(std::span<const U8>& in, std::span<U8>& out, bool last) = 0;

   Step fail(std::string fault) {
      fault_ = std::move(fault);
      return Step::end;
   }

 private:
   std::unique_ptr<RawInput> raw_;
   bool finished_ = false; // nothing more will come, cleanly or by fault_
};

class PlainInput final : public DecodingInput {
 public:
   PlainInput(U64 size, std::unique_ptr<RawInput> raw)
       : DecodingInput(Compression::none, size, std::move(raw)) {}

 private:
   Step step(std::span<const U8>& in, std::span<U8>& out, bool last) override {
      std::size_t n = std::min(in.size(), out.size());
      std::memcpy(out.data(), in.data(), n);
      in = in.subspan(n);
      out = out.subspan(n);
      return last && in.empty() ? Step::end : Step::more;
   }
};

// A gzip file may hold several members one after the other (as concatenated
// or appended files do); they read as one stream. Anything else after the
// last member is reported, not dropped. Inflated with ISA-L's igzip, which
// checks each member's CRC and length as zlib does and is several times as
// fast on the same data.
class GzipInput final : public DecodingInput {
 public:
   GzipInput(U64 size, std::unique_ptr<RawInput> raw)
       : DecodingInput(Compression::gzip, size, std::move(raw)) {}

 private:
   Step step(std::span<const U8>& in, std::span<U8>& out, bool last) override {
      if (!inMember_) {
         if (in.empty()) {
            return last ? Step::end : Step::more;
         }
         if (started_ && (in[0] != kGzipMagic[0] || (in.size() > 1 && in[1] != kGzipMagic[1]))) {
            return fail("gzip: data after the last member that is not gzip");
         }
         if (started_) {
            isal_inflate_reset(&state_);
         } else {
            isal_inflate_init(&state_);
         }
         state_.crc_flag = ISAL_GZIP; // header, trailer and CRC as a gzip member has them
         started_ = inMember_ = true;
      }
      // igzip does not write through next_in.
      state_.next_in = const_cast<U8*>(in.data());
      state_.avail_in = static_cast<U32>(std::min<std::size_t>(in.size(), UINT32_MAX));
      state_.next_out = out.data();
      state_.avail_out = static_cast<U32>(std::min<std::size_t>(out.size(), UINT32_MAX));
      U32 const given = state_.avail_in;
      int const code = isal_inflate(&state_);
      std::size_t const taken = given - state_.avail_in;
      std::size_t const gave = static_cast<std::size_t>(state_.next_out - out.data());
      in = in.subspan(taken);
      out = out.subspan(gave);
      if (code < 0) {
         return fail("gzip: damaged data");
      }
      if (state_.block_state == ISAL_BLOCK_FINISH) {
         inMember_ = false;
         return Step::more;
      }
      bool const progress = taken > 0 || gave > 0;
      return last && in.empty() && !progress ? fail("gzip: stream cut short") : Step::more;
   }

   inflate_state state_{};
   bool started_ = false;  // state_ was initialised
   bool inMember_ = false; // between a member's first byte and its end
};

// Decodes with libbz2's stream interface rather than BZ2_bzRead: it keeps
// every byte decoded before a cut-off stream ends, and it goes on into the
// streams that parallel compressors concatenate.
class Bzip2Input final : public DecodingInput {
 public:
   Bzip2Input(U64 size, std::unique_ptr<RawInput> raw)
       : DecodingInput(Compression::bzip2, size, std::move(raw)) {}
   ~Bzip2Input() override {
      if (inStream_) {
         BZ2_bzDecompressEnd(&bz_);
      }
   }

 private:
   Step step(std::span<const U8>& in, std::span<U8>& out, bool last) override {
      if (!inStream_) {
         if (in.empty()) {
            return last ? Step::end : Step::more;
         }
         if (BZ2_bzDecompressInit(&bz_, 0, 0) != BZ_OK) {
            return fail("bzip2: cannot start decoding");
         }
         inStream_ = true;
      }
      // libbz2 does not write through next_in.
      bz_.next_in = const_cast<char*>(reinterpret_cast<char const*>(in.data()));
      bz_.avail_in = static_cast<unsigned>(in.size());
      bz_.next_out = reinterpret_cast<char*>(out.data());
      bz_.avail_out = static_cast<unsigned>(std::min<std::size_t>(out.size(), UINT_MAX));
      int code = BZ2_bzDecompress(&bz_);
      bool progress =
         bz_.avail_in < in.size() || bz_.next_out != reinterpret_cast<char*>(out.data());
      in = in.subspan(in.size() - bz_.avail_in);
      out =
         out.subspan(static_cast<std::size_t>(bz_.next_out - reinterpret_cast<char*>(out.data())));
      if (code == BZ_STREAM_END) {
         BZ2_bzDecompressEnd(&bz_);
         inStream_ = false;
         return Step::more;
      }
      if (code != BZ_OK) {
         return fail(cat("bzip2: damaged data (libbz2 code ", -code, ")"));
      }
      return last && in.empty() && !progress ? fail("bzip2: stream cut short") : Step::more;
   }

   bz_stream bz_{};
   bool inStream_ = false; // bz_ holds a decoder (between Init and End)
};

// liblzma reads concatenated .xz streams (and the padding between them) as
// one when told so.
class XzInput final : public DecodingInput {
 public:
   XzInput(U64 size, std::unique_ptr<RawInput> raw)
       : DecodingInput(Compression::xz, size, std::move(raw)) {
      started_ = lzma_stream_decoder(&lz_, kXzMemoryLimit, LZMA_CONCATENATED) == LZMA_OK;
   }
   ~XzInput() override { lzma_end(&lz_); }

 private:
   Step step(std::span<const U8>& in, std::span<U8>& out, bool last) override {
      if (!started_) {
         return fail("xz: cannot start decoding");
      }
      lz_.next_in = in.data();
      lz_.avail_in = in.size();
      lz_.next_out = out.data();
      lz_.avail_out = out.size();
      lzma_ret code = lzma_code(&lz_, last ? LZMA_FINISH : LZMA_RUN);
      in = in.subspan(in.size() - lz_.avail_in);
      out = out.subspan(static_cast<std::size_t>(lz_.next_out - out.data()));
      switch (code) {
      case LZMA_STREAM_END:
         return Step::end;
      case LZMA_OK:
         return Step::more;
      case LZMA_BUF_ERROR: // no progress possible: with LZMA_FINISH, the data is cut short
         return last ? fail("xz: stream cut short") : Step::more;
      case LZMA_MEM_ERROR:
         return fail("xz: out of memory");
      case LZMA_MEMLIMIT_ERROR:
         return fail("xz: the stream needs more than 512 MiB to decode");
      default:
         return fail(cat("xz: damaged data (liblzma code ", static_cast<int>(code), ")"));
      }
   }

   lzma_stream lz_ = LZMA_STREAM_INIT;
   bool started_ = false;
};

// Zstandard frames one after the other (as concatenated files give) read as
// one stream; skippable frames are passed over.
class ZstdInput final : public DecodingInput {
 public:
   ZstdInput(U64 size, std::unique_ptr<RawInput> raw)
       : DecodingInput(Compression::zstd, size, std::move(raw)), zs_(ZSTD_createDStream()) {}
   ~ZstdInput() override { ZSTD_freeDStream(zs_); }

 private:
   Step step(std::span<const U8>& in, std::span<U8>& out, bool last) override {
      if (!zs_) {
         return fail("zstd: cannot start decoding");
      }
      if (last && in.empty() && frameDone_) {
         return Step::end;
      }
      ZSTD_inBuffer zin{in.data(), in.size(), 0};
      ZSTD_outBuffer zout{out.data(), out.size(), 0};
      std::size_t code = ZSTD_decompressStream(zs_, &zout, &zin);
      in = in.subspan(zin.pos);
      out = out.subspan(zout.pos);
      if (ZSTD_isError(code)) {
         return fail(cat("zstd: damaged data (", ZSTD_getErrorName(code), ")"));
      }
      frameDone_ = code == 0;
      bool progress = zin.pos > 0 || zout.pos > 0;
      return last && in.empty() && !progress && !frameDone_ ? fail("zstd: stream cut short")
                                                            : Step::more;
   }

   ZSTD_DStream* zs_;
   bool frameDone_ = true; // no frame begun, or the last one ended and was flushed
};

// Runs another input's decompression on a thread of its own, up to
// kAheadChunks chunks ahead of the reader, so that decompressing and decoding
// records share the time. Reads, ends and faults exactly as the input it
// wraps. The thread is stopped and joined on destruction, also mid-stream.
//
// NOTE: destruction waits for the read the thread is in to return: on a pipe
// whose writer neither writes nor closes, until it does.
class ReadAheadInput final : public InputFile {
 public:
   explicit ReadAheadInput(std::unique_ptr<InputFile> inner)
       : InputFile(inner->compression(), inner->size()), inner_(std::move(inner)),
         thread_([this] { produce(); }) {}
   ~ReadAheadInput() override {
      {
         std::lock_guard lock(mutex_);
         stopping_ = true;
      }
      changed_.notify_all();
      thread_.join();
   }

   std::size_t read(std::span<U8> out) override {
      std::size_t done = 0;
      while (done < out.size()) {
         if (taken_ == current_.size() && !nextChunk()) {
            break;
         }
         std::size_t const n = std::min(out.size() - done, current_.size() - taken_);
         std::memcpy(out.data() + done, current_.data() + taken_, n);
         taken_ += n;
         done += n;
      }
      return done;
   }
   U64 consumed() const override { return consumed_.load(std::memory_order_relaxed); }

 private:
   // The decoding thread: fills chunks until the input ends (a short chunk)
   // or the reader goes away.
   void produce() {
      for (;;) {
         std::vector<U8> chunk;
         {
            std::unique_lock lock(mutex_);
            changed_.wait(lock, [this] { return stopping_ || ready_.size() < kAheadChunks; });
            if (stopping_) {
               return;
            }
            if (!spare_.empty()) {
               chunk = std::move(spare_.back());
               spare_.pop_back();
            }
         }
         chunk.resize(kAheadChunkBytes);
         chunk.resize(inner_->read(chunk));
         consumed_.store(inner_->consumed(), std::memory_order_relaxed);
         bool const last = chunk.size() < kAheadChunkBytes;
         {
            std::lock_guard lock(mutex_);
            ready_.push_back(std::move(chunk));
            producerDone_ = last;
         }
         changed_.notify_all();
         if (last) {
            return;
         }
      }
   }

   // Moves on to the next decoded chunk; false at the end of the data, with
   // the wrapped input's fault taken over.
   bool nextChunk() {
      std::unique_lock lock(mutex_);
      if (current_.capacity() > 0) {
         spare_.push_back(std::move(current_));
      }
      current_.clear();
      taken_ = 0;
      changed_.notify_all();
      // Only the last chunk can be empty.
      changed_.wait(
         lock, [this] { return (!ready_.empty() && !ready_.front().empty()) || producerDone_; });
      if (ready_.empty() || ready_.front().empty()) {
         fault_ = inner_->fault(); // the thread has finished with inner_
         return false;
      }
      current_ = std::move(ready_.front());
      ready_.pop_front();
      return true;
   }

   std::unique_ptr<InputFile> inner_; // used by the decoding thread only until producerDone_
   std::mutex mutex_;
   std::condition_variable changed_;
   std::deque<std::vector<U8>> ready_;  // decoded chunks in order, the last one short
   std::vector<std::vector<U8>> spare_; // chunks the reader is done with, for reuse
   bool stopping_ = false;              // the reader is going away
   bool producerDone_ = false;          // the short last chunk is in ready_
   std::atomic<U64> consumed_{0};
   std::vector<U8> current_; // the chunk being read, by the reader's thread only
   std::size_t taken_ = 0;   // of current_
   std::thread thread_;      // last: starts once everything above exists
};

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

// Output through a streaming compressor (xz, zstd): what it gives back is
// written chunk by chunk; close() drains it and ends the stream.
class StreamOutput : public OutputFile {
 public:
   StreamOutput(std::FILE* file, char const* format)
       : file_(file), format_(format), buffer_(kInputBytes) {}
   ~StreamOutput() override {
      if (file_) {
         std::fclose(file_);
      }
   }
   bool write(std::span<const U8> bytes) override {
      failed_ = failed_ || !file_ || !pump(bytes, false);
      return !failed_;
   }
   bool close(std::string* error) override {
      if (!file_) {
         return true;
      }
      failed_ = failed_ || !pump({}, true);
      failed_ = std::fclose(file_) != 0 || failed_;
      file_ = nullptr;
      if (failed_ && error) {
         *error = cat(format_, ": write error");
      }
      return !failed_;
   }

 protected:
   // Compresses `in` whole (and ends the stream when `finish`), passing each
   // output chunk to flush(); false on a compressor or write error.
   virtual bool pump(std::span<const U8> in, bool finish) = 0;
   bool flush(std::size_t bytes) { return std::fwrite(buffer_.data(), 1, bytes, file_) == bytes; }
   std::vector<U8>& buffer() { return buffer_; }

 private:
   std::FILE* file_;
   char const* format_;
   std::vector<U8> buffer_;
   bool failed_ = false;
};

class XzOutput final : public StreamOutput {
 public:
   explicit XzOutput(std::FILE* file) : StreamOutput(file, "xz") {
      started_ = lzma_easy_encoder(&lz_, kXzPreset, LZMA_CHECK_CRC64) == LZMA_OK;
   }
   ~XzOutput() override { lzma_end(&lz_); }

 private:
   bool pump(std::span<const U8> in, bool finish) override {
      lz_.next_in = in.data();
      lz_.avail_in = in.size();
      while (started_) {
         lz_.next_out = buffer().data();
         lz_.avail_out = buffer().size();
         lzma_ret code = lzma_code(&lz_, finish ? LZMA_FINISH : LZMA_RUN);
         if ((code != LZMA_OK && code != LZMA_STREAM_END) ||
             !flush(buffer().size() - lz_.avail_out)) {
            return false;
         }
         if (code == LZMA_STREAM_END || (!finish && lz_.avail_in == 0)) {
            return true;
         }
      }
      return false;
   }

   lzma_stream lz_ = LZMA_STREAM_INIT;
   bool started_ = false;
};

class ZstdOutput final : public StreamOutput {
 public:
   explicit ZstdOutput(std::FILE* file) : StreamOutput(file, "zstd"), zs_(ZSTD_createCCtx()) {
      if (zs_) {
         ZSTD_CCtx_setParameter(zs_, ZSTD_c_compressionLevel, kZstdLevel);
      }
   }
   ~ZstdOutput() override { ZSTD_freeCCtx(zs_); }

 private:
   bool pump(std::span<const U8> in, bool finish) override {
      ZSTD_inBuffer zin{in.data(), in.size(), 0};
      while (zs_) {
         ZSTD_outBuffer zout{buffer().data(), buffer().size(), 0};
         std::size_t left =
            ZSTD_compressStream2(zs_, &zout, &zin, finish ? ZSTD_e_end : ZSTD_e_continue);
         if (ZSTD_isError(left) || !flush(zout.pos)) {
            return false;
         }
         if (finish ? left == 0 : zin.pos == zin.size) {
            return true;
         }
      }
      return false;
   }

   ZSTD_CCtx* zs_;
};

} // namespace

InputFile::~InputFile() = default;
OutputFile::~OutputFile() = default;

std::unique_ptr<InputFile> InputFile::open(std::string const& path, std::string* error) {
   bool const standardInput = path == "-";
   std::FILE* file = standardInput ? stdin : std::fopen(path.c_str(), "rb");
   if (!file) {
      *error = systemError("cannot open", path);
      return nullptr;
   }
   struct stat info {};
   // Pipes and terminals have no size to show progress against.
   U64 size =
      fstat(fileno(file), &info) == 0 && S_ISREG(info.st_mode) ? static_cast<U64>(info.st_size) : 0;
   auto raw = std::make_unique<RawInput>(file, !standardInput);
   raw->refill();
   if (raw->failed()) {
      *error = systemError("cannot read", path);
      return nullptr;
   }
   std::span<const U8> head = raw->pending();
   if (startsWith(head, kGzipMagic)) {
      return std::make_unique<ReadAheadInput>(std::make_unique<GzipInput>(size, std::move(raw)));
   }
   if (startsWith(head, kBzip2Magic)) {
      return std::make_unique<ReadAheadInput>(std::make_unique<Bzip2Input>(size, std::move(raw)));
   }
   if (startsWith(head, kXzMagic)) {
      return std::make_unique<ReadAheadInput>(std::make_unique<XzInput>(size, std::move(raw)));
   }
   if (startsWith(head, kZstdMagic)) {
      return std::make_unique<ReadAheadInput>(std::make_unique<ZstdInput>(size, std::move(raw)));
   }
   for (Unsupported const& format : kUnsupported) {
      if (startsWith(head, format.magic)) {
         *error = cat("\"", path, "\" is compressed as ", format.name,
                      ", which is not supported (gzip, bzip2, xz and zstd are)");
         return nullptr;
      }
   }
   // Plain data is only copied: a thread would not pay for itself.
   return std::make_unique<PlainInput>(size, std::move(raw));
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
   switch (compression) {
   case Compression::xz:
      return std::make_unique<XzOutput>(file);
   case Compression::zstd:
      return std::make_unique<ZstdOutput>(file);
   case Compression::bzip2:
      break;
   default:
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
