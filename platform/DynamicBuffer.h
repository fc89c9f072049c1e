/// @file
/// A growable character buffer that starts in storage the caller provides
/// (usually on the stack) and moves to the heap only when it must grow.
///
/// Renderers append to a DynamicBufferInterface& so that one routine serves a
/// stack buffer of any size:
///
/// @code{.cpp}
///   Kiv::DynamicBuffer<64> buf;
///   buf.append("0x");
///   buf.appendHex2(0xfd);
///   std::string text = buf.str();       // "0xfd"
/// @endcode
///
/// Not copyable or movable (the inline storage may be in use). Not thread-safe.
#pragma once

#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/Types.h"

#include <cstddef>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

namespace Kiv {

/// A growable character buffer that renderers append to, whatever its inline capacity.
class QORBGP_EXPORT DynamicBufferInterface {
 public:
   DynamicBufferInterface(DynamicBufferInterface const&) = delete;
   DynamicBufferInterface& operator=(DynamicBufferInterface const&) = delete;

   void append(char c) {
      if (size_ == capacity_) [[unlikely]] {
         grow(1);
      }
      data_[size_++] = c;
   }
   void append(std::string_view s) {
      if (s.empty()) {
         return; // an empty view may have a null data() that memcpy may not see
      }
      // The old storage outlives the copy, so `s` may be a view of this buffer.
      std::unique_ptr<char[]> old;
      if (s.size() > capacity_ - size_) [[unlikely]] {
         old = grow(s.size());
      }
      std::memcpy(data_ + size_, s.data(), s.size());
      size_ += s.size();
   }
   /// Exactly two lower-case hexadecimal digits.
   void appendHex2(U8 octet);
   /// Decimal digits, no sign, no padding.
   void appendDecimal(U64 value);

   /// Sets the size, growing as needed; new bytes are unspecified.
   void resize(std::size_t size) {
      if (size > capacity_) {
         grow(size - size_);
      }
      size_ = size;
   }
   /// Makes room for `capacity` bytes in all, so that appending up to that size
   /// allocates nothing. Content and size are kept.
   void reserve(std::size_t capacity) {
      if (capacity > capacity_) {
         grow(capacity - size_);
      }
   }
   void clear() noexcept { size_ = 0; }

   char* data() noexcept { return data_; }
   char const* data() const noexcept { return data_; }
   std::size_t size() const noexcept { return size_; }
   std::size_t capacity() const noexcept { return capacity_; }
   bool onHeap() const noexcept { return heap_ != nullptr; }
   std::string_view view() const noexcept { return {data_, size_}; }
   std::string str() const { return std::string(data_, size_); }

 protected:
   DynamicBufferInterface(char* inlineStorage, std::size_t inlineCapacity) noexcept
       : data_(inlineStorage), capacity_(inlineCapacity) {}
   ~DynamicBufferInterface() = default;

 private:
   /// Makes room for at least `extra` more bytes: at least doubles capacity.
   /// Returns the heap storage given up (empty if it was the inline storage).
   std::unique_ptr<char[]> grow(std::size_t extra);

   char* data_;
   std::size_t size_ = 0;
   std::size_t capacity_;
   std::unique_ptr<char[]> heap_; ///< owns data_ once the buffer has left the inline storage
};

/// A DynamicBufferInterface that starts in `InlineCapacity` bytes of its own storage.
template <std::size_t InlineCapacity>
class DynamicBuffer final : public DynamicBufferInterface {
 public:
   DynamicBuffer() noexcept : DynamicBufferInterface(storage_, InlineCapacity) {}

 private:
   char storage_[InlineCapacity];
};

} // namespace Kiv
