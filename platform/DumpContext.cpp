#include "QorBgpCommunity/platform/DumpContext.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <ostream>

namespace Kiv {

namespace {
// Most dump lines fit; longer ones take a second, exactly sized pass.
constexpr std::size_t lineBufferSize = 256;
} // namespace

void DumpContext::write(unsigned indent, std::string_view text) {
   text_.append(indent, ' ');
   text_.append(text);
   newlines_ += static_cast<unsigned>(std::count(text.begin(), text.end(), '\n'));
}

void DumpContext::line(unsigned indent, std::string_view text) {
   write(indent, text);
   text_.push_back('\n');
   ++newlines_;
}

void DumpContext::printf(unsigned indent, char const* format, ...) {
   char buffer[lineBufferSize];
   std::va_list args;
   va_start(args, format);
   int size = std::vsnprintf(buffer, sizeof buffer, format, args);
   va_end(args);
   if (size < 0) {
      return; // an encoding error leaves nothing worth printing
   }
   if (static_cast<std::size_t>(size) < sizeof buffer) {
      write(indent, std::string_view(buffer, static_cast<std::size_t>(size)));
      return;
   }
   std::string heap(static_cast<std::size_t>(size) + 1, '\0');
   va_start(args, format);
   std::vsnprintf(heap.data(), heap.size(), format, args);
   va_end(args);
   heap.pop_back();
   write(indent, heap);
}

void DumpContext::nullChild(unsigned indent) { line(indent, "NULL"); }

bool DumpContext::printedBefore(void const* object, std::string_view type, unsigned indent) {
   auto [it, inserted] = printed_.try_emplace(object, lineNumber());
   if (inserted) {
      return false;
   }
   printf(indent, "%.*s dumped at line %u\n", static_cast<int>(type.size()), type.data(),
          it->second);
   return true;
}

void DumpContext::writeTo(std::ostream& os) const {
   os.write(text_.data(), static_cast<std::streamsize>(text_.size()));
}

std::ostream& operator<<(std::ostream& os, DumpContext const& ctx) {
   ctx.writeTo(os);
   return os;
}

} // namespace Kiv
