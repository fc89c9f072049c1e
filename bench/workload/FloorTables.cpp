#include "FloorTables.h"

#include <algorithm>
#include <charconv>

namespace bench {

namespace {

U32 byteSwap(U32 v) noexcept { return __builtin_bswap32(v); }
U64 byteSwap(U64 v) noexcept { return __builtin_bswap64(v); }

template <class T>
T loadBigEndian(U8 const* bytes) noexcept {
   T value;
   std::memcpy(&value, bytes, sizeof value);
   return byteSwap(value);
}

template <class T>
void storeBigEndian(char* out, T value) noexcept {
   value = byteSwap(value);
   std::memcpy(out, &value, sizeof value);
}

// Decodes `count` elements with `load` into a stack buffer (the heap beyond
// 256), sorts them and drops repeats, then hands them to `use`.
template <class T, class Load, class Use>
auto withSortedValues(std::size_t count, Load load, Use use) {
   T stack[256];
   std::unique_ptr<T[]> heap(count > 256 ? new T[count] : nullptr);
   T* values = heap ? heap.get() : stack;
   for (std::size_t i = 0; i < count; ++i) {
      values[i] = load(i);
   }
   std::sort(values, values + count);
   std::size_t const unique = static_cast<std::size_t>(std::unique(values, values + count) - values);
   return use(std::span<T const>(values, unique));
}

// Flags, type code and length; the extended length above 255 bytes.
char* attributeHeader(char* out, U8 type, std::size_t length) {
   bool const extended = length > 255;
   *out++ = static_cast<char>(extended ? 0xD0 : 0xC0);
   *out++ = static_cast<char>(type);
   if (extended) {
      *out++ = static_cast<char>(length >> 8);
   }
   *out++ = static_cast<char>(length);
   return out;
}

} // namespace

FloorTables::~FloorTables() {
   for (auto& [value, interned] : extValues_) {
      delete interned;
   }
}

void const* FloorTables::intern(U8 type, std::span<U8 const> value) {
   U8 const* bytes = value.data();
   switch (type) {
   case 8:
      return withSortedValues<U32>(
         value.size() / 4, [&](std::size_t i) { return loadBigEndian<U32>(bytes + 4 * i); },
         [&](std::span<U32 const> v) { return standard_.intern(v); });
   case 32:
      return withSortedValues<LargeValue>(
         value.size() / 12,
         [&](std::size_t i) {
            U8 const* e = bytes + 12 * i;
            return LargeValue{loadBigEndian<U32>(e), loadBigEndian<U32>(e + 4),
                              loadBigEndian<U32>(e + 8)};
         },
         [&](std::span<LargeValue const> v) { return large_.intern(v); });
   case 16:
      return withSortedValues<U64>(
         value.size() / 8, [&](std::size_t i) { return loadBigEndian<U64>(bytes + 8 * i); },
         [&](std::span<U64 const> v) {
            ExtValue const* interned[256];
            std::size_t const count = std::min<std::size_t>(v.size(), 256);
            for (std::size_t i = 0; i < count; ++i) {
               auto [it, added] = extValues_.try_emplace(v[i], nullptr);
               if (added) {
                  it->second = new ExtValue{v[i], static_cast<U8>(v[i] >> 48)};
               }
               interned[i] = it->second;
            }
            return extended_.intern(std::span<ExtValue const* const>(interned, count));
         });
   }
   return nullptr;
}

std::string FloorTables::text(U8 type, void const* list) {
   char buffer[1 << 14];
   char* at = buffer;
   char* const end = buffer + sizeof buffer - 64;
   switch (type) {
   case 8:
      for (U32 v : static_cast<FlatList<U32> const*>(list)->values()) {
         if (at >= end) break;
         at = std::to_chars(at, at + 5, v >> 16).ptr;
         *at++ = ':';
         at = std::to_chars(at, at + 5, v & 0xFFFF).ptr;
         *at++ = ' ';
      }
      break;
   case 32:
      for (LargeValue const& v : static_cast<FlatList<LargeValue> const*>(list)->values()) {
         if (at >= end) break;
         at = std::to_chars(at, at + 10, v.global).ptr;
         *at++ = ':';
         at = std::to_chars(at, at + 10, v.local1).ptr;
         *at++ = ':';
         at = std::to_chars(at, at + 10, v.local2).ptr;
         *at++ = ' ';
      }
      break;
   case 16:
      // A route target's form: "RT:<2-byte AS>:<4-byte number>" in brackets.
      *at++ = '[';
      *at++ = ' ';
      for (ExtValue const* v : static_cast<FlatList<ExtValue const*> const*>(list)->values()) {
         if (at >= end) break;
         std::memcpy(at, "RT:", 3);
         at = std::to_chars(at + 3, at + 8, (v->value >> 32) & 0xFFFF).ptr;
         *at++ = ':';
         at = std::to_chars(at, at + 10, v->value & 0xFFFFFFFF).ptr;
         *at++ = ' ';
      }
      *at++ = ']';
      *at++ = ' ';
      break;
   }
   return std::string(buffer, at > buffer ? at - 1 : at);
}

std::string FloorTables::wire(U8 type, void const* list) {
   std::string out;
   // One allocation of the exact size, then the header and the values.
   auto write = [&](std::size_t length, auto&& values) {
      out.resize((length > 255 ? 4 : 3) + length);
      values(attributeHeader(out.data(), type, length));
   };
   switch (type) {
   case 8: {
      auto v = static_cast<FlatList<U32> const*>(list)->values();
      write(4 * v.size(), [&](char* at) {
         for (U32 x : v) storeBigEndian(at, x), at += 4;
      });
      break;
   }
   case 32: {
      auto v = static_cast<FlatList<LargeValue> const*>(list)->values();
      write(12 * v.size(), [&](char* at) {
         for (LargeValue const& x : v) {
            storeBigEndian(at, x.global), storeBigEndian(at + 4, x.local1);
            storeBigEndian(at + 8, x.local2), at += 12;
         }
      });
      break;
   }
   case 16: {
      auto v = static_cast<FlatList<ExtValue const*> const*>(list)->values();
      write(8 * v.size(), [&](char* at) {
         for (ExtValue const* x : v) storeBigEndian(at, x->value), at += 8;
      });
      break;
   }
   }
   return out;
}

} // namespace bench
