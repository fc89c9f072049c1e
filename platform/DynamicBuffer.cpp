#include "QorBgpCommunity/platform/DynamicBuffer.h"

#include <algorithm>
#include <charconv>

namespace Kiv {

namespace {
constexpr char hexDigits[] = "0123456789abcdef";
constexpr std::size_t maxU64DecimalDigits = 20;
} // namespace

void DynamicBufferInterface::appendHex2(U8 octet) {
   char const digits[2] = {hexDigits[octet >> 4], hexDigits[octet & 0xf]};
   append(std::string_view(digits, 2));
}

void DynamicBufferInterface::appendDecimal(U64 value) {
   char digits[maxU64DecimalDigits];
   auto result = std::to_chars(digits, digits + sizeof digits, value);
   append(std::string_view(digits, static_cast<std::size_t>(result.ptr - digits)));
}

std::unique_ptr<char[]> DynamicBufferInterface::grow(std::size_t extra) {
   std::size_t capacity = std::max(capacity_ * 2, size_ + extra);
   auto heap = std::make_unique_for_overwrite<char[]>(capacity);
   std::memcpy(heap.get(), data_, size_);
   std::swap(heap_, heap);
   data_ = heap_.get();
   capacity_ = capacity;
   return heap;
}

} // namespace Kiv
