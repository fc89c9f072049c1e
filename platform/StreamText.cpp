#include "QorBgpCommunity/platform/StreamText.h"

#include <cstring>
#include <ostream>
#include <sstream>
#include <streambuf>

namespace Kiv {

namespace {

// A stream buffer collecting a text: characters go to a block on hand first
// (no virtual call per character), the block to a string when it fills up
// and when the text is taken. The string keeps its capacity between texts.
class TextBuffer : public std::streambuf {
 public:
   TextBuffer() { setp(block_, block_ + sizeof block_); }
   TextBuffer(TextBuffer const&) = delete;
   TextBuffer& operator=(TextBuffer const&) = delete;

   std::string take() {
      flush();
      std::string text = text_;
      text_.clear();
      return text;
   }
   void clear() noexcept {
      text_.clear();
      setp(block_, block_ + sizeof block_);
   }

 protected:
   int_type overflow(int_type c) override {
      flush();
      if (!traits_type::eq_int_type(c, traits_type::eof())) {
         *pptr() = traits_type::to_char_type(c);
         pbump(1);
      }
      return traits_type::not_eof(c);
   }
   std::streamsize xsputn(char const* s, std::streamsize n) override {
      if (n <= epptr() - pptr()) {
         std::memcpy(pptr(), s, static_cast<std::size_t>(n));
         pbump(static_cast<int>(n));
      } else {
         flush();
         text_.append(s, static_cast<std::size_t>(n));
      }
      return n;
   }

 private:
   void flush() {
      text_.append(pbase(), static_cast<std::size_t>(pptr() - pbase()));
      setp(block_, block_ + sizeof block_);
   }

   char block_[512];
   std::string text_;
};

// The calling thread's stream, and whether a text is being printed into it.
struct ThreadStream {
   TextBuffer buffer;
   std::ostream os{&buffer};
   // The state every text starts from (copyfmt would also recache the
   // locale's facets, which costs more than a short text).
   std::ios::fmtflags const flags = os.flags();
   std::streamsize const precision = os.precision();
   char const fill = os.fill();
   bool busy = false;
};

} // namespace

std::string streamText(void (*print)(std::ostream&, void const*), void const* context) {
   thread_local ThreadStream stream;
   if (stream.busy) {
      std::ostringstream own;
      print(own, context);
      return std::move(own).str();
   }
   struct Release {
      ThreadStream& s;
      ~Release() {
         s.buffer.clear();
         s.os.flags(s.flags);
         s.os.precision(s.precision);
         s.os.fill(s.fill);
         s.os.width(0);
         s.os.clear();
         s.busy = false;
      }
   } release{stream};
   stream.busy = true;
   print(stream.os, context);
   return stream.buffer.take();
}

} // namespace Kiv
