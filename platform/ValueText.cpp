#include "QorBgpCommunity/platform/ValueText.h"

#include "QorBgpCommunity/platform/Errors.h"

#include <charconv>

namespace Kiv {

std::string_view boolText(bool value) noexcept { return value ? "True" : "False"; }

std::optional<bool> parseBool(std::string_view text) noexcept {
   if (text == "True") {
      return true;
   }
   if (text == "False") {
      return false;
   }
   return std::nullopt;
}

std::optional<U64> parseU64(std::string_view text) noexcept {
   U64 value = 0;
   auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
   if (text.empty() || ec != std::errc() || end != text.data() + text.size()) {
      return std::nullopt;
   }
   return value;
}

ValueTextWriter::ValueTextWriter(std::string_view typeName) {
   text_.reserve(64 + typeName.size());
   text_.append("Value('").append(typeName).append("', ** {");
}

ValueTextWriter& ValueTextWriter::field(std::string_view name, std::string_view valueText) {
   if (!first_) {
      text_.append(", ");
   }
   first_ = false;
   text_.append("'").append(name).append("': ").append(valueText);
   return *this;
}

ValueTextWriter& ValueTextWriter::field(std::string_view name, bool value) {
   return field(name, boolText(value));
}

ValueTextWriter& ValueTextWriter::field(std::string_view name, U64 value) {
   return field(name, std::string_view(std::to_string(value)));
}

std::string ValueTextWriter::finish() {
   text_.append("})");
   return std::move(text_);
}

namespace {

// A cursor over the text that knows the punctuation of the value form.
struct Scanner {
   std::string_view text;
   std::size_t pos = 0;

   void skipSpace() {
      while (pos < text.size() && text[pos] == ' ') {
         ++pos;
      }
   }
   bool take(std::string_view token) {
      if (text.substr(pos).starts_with(token)) {
         pos += token.size();
         return true;
      }
      return false;
   }
   // A quoted name: 'abc'. Empty optional when the text has none here.
   std::optional<std::string_view> quoted() {
      if (!take("'")) {
         return std::nullopt;
      }
      std::size_t close = text.find('\'', pos);
      if (close == std::string_view::npos) {
         return std::nullopt;
      }
      std::string_view name = text.substr(pos, close - pos);
      pos = close + 1;
      return name;
   }
   // A field value: everything up to the next ',' or '}' outside brackets and
   // quotes, trailing spaces dropped. Empty optional when brackets don't close.
   std::optional<std::string_view> value() {
      std::size_t start = pos;
      int depth = 0;
      char quote = 0;
      for (; pos < text.size(); ++pos) {
         char c = text[pos];
         if (quote) {
            if (c == quote) {
               quote = 0;
            }
         } else if (c == '\'' || c == '"') {
            quote = c;
         } else if (c == '(' || c == '[' || c == '{') {
            ++depth;
         } else if (c == ')' || c == ']' || c == '}') {
            if (depth == 0) {
               break;
            }
            --depth;
         } else if (c == ',' && depth == 0) {
            break;
         }
      }
      if (quote || depth != 0 || pos == text.size()) {
         return std::nullopt;
      }
      std::string_view v = text.substr(start, pos - start);
      while (!v.empty() && v.back() == ' ') {
         v.remove_suffix(1);
      }
      return v;
   }
};

} // namespace

ValueTextReader::ValueTextReader(std::string_view text, std::string_view typeName)
    : typeName_(typeName) {
   Scanner in{text};
   if (!in.take("Value(") || in.quoted() != typeName) {
      fail("expected Value('" + typeName_ + "', ...)");
   }
   if (!in.take(",")) {
      fail("expected ', ** {' after the type name");
   }
   in.skipSpace();
   if (!in.take("**")) {
      fail("expected ', ** {' after the type name");
   }
   in.skipSpace();
   if (!in.take("{")) {
      fail("expected ', ** {' after the type name");
   }
   in.skipSpace();
   if (!in.take("}")) {
      do {
         in.skipSpace();
         auto name = in.quoted();
         if (!name || name->empty()) {
            fail("expected a quoted field name at offset " + std::to_string(in.pos));
         }
         in.skipSpace();
         if (!in.take(":")) {
            fail("expected ':' after field '" + std::string(*name) + "'");
         }
         in.skipSpace();
         auto value = in.value();
         if (!value || value->empty()) {
            fail("bad value of field '" + std::string(*name) + "'");
         }
         for (Field const& f : fields_) {
            if (f.name == *name) {
               fail("field '" + std::string(*name) + "' given twice");
            }
         }
         fields_.push_back({*name, *value});
      } while (in.take(","));
      if (!in.take("}")) {
         fail("expected '}' at offset " + std::to_string(in.pos));
      }
   }
   if (!in.take(")") || in.pos != text.size()) {
      fail("expected ')' at the end");
   }
}

std::string_view ValueTextReader::field(std::string_view name) {
   for (Field& f : fields_) {
      if (f.name == name) {
         f.read = true;
         return f.value;
      }
   }
   fail("missing field '" + std::string(name) + "'");
}

bool ValueTextReader::boolField(std::string_view name) {
   std::string_view text = field(name);
   auto value = parseBool(text);
   if (!value) {
      fail("field '" + std::string(name) + "' is not True or False: " + std::string(text));
   }
   return *value;
}

U64 ValueTextReader::u64Field(std::string_view name) {
   std::string_view text = field(name);
   auto value = parseU64(text);
   if (!value) {
      fail("field '" + std::string(name) + "' is not an unsigned number: " + std::string(text));
   }
   return *value;
}

void ValueTextReader::finish() const {
   for (Field const& f : fields_) {
      if (!f.read) {
         fail("unknown field '" + std::string(f.name) + "'");
      }
   }
}

void ValueTextReader::fail(std::string_view what) const {
   throw RangeError("malformed value text of " + typeName_ + ": " + std::string(what));
}

std::string pointerText(void const* pointer) {
   char text[2 + 2 * sizeof(std::uintptr_t)] = {'0', 'x'};
   auto end = std::to_chars(text + 2, text + sizeof text,
                            reinterpret_cast<std::uintptr_t>(pointer), 16).ptr;
   return std::string(text, end);
}

std::optional<std::uintptr_t> parsePointer(std::string_view text) noexcept {
   if (!text.starts_with("0x") || text.size() == 2) {
      return std::nullopt;
   }
   std::uintptr_t value = 0;
   auto [end, ec] = std::from_chars(text.data() + 2, text.data() + text.size(), value, 16);
   if (ec != std::errc() || end != text.data() + text.size()) {
      return std::nullopt;
   }
   return value;
}

std::string flagSetValueText(std::string_view typeName, std::span<FlagField const> fields,
                             U32 value) {
   ValueTextWriter text(typeName);
   for (FlagField const& field : fields) {
      text.field(field.name, (value & field.bit) != 0);
   }
   return text.finish();
}

void flagSetOutOfRange(std::string_view name, U32 value, U32 max) {
   throw RangeError(std::string(name) + " " + std::to_string(value) + " > " + std::to_string(max) +
                    " not allowed");
}

U32 flagSetFromValueText(std::string_view text, std::string_view typeName,
                         std::span<FlagField const> fields) {
   ValueTextReader in(text, typeName);
   U32 value = 0;
   for (FlagField const& field : fields) {
      value |= in.boolField(field.name) ? field.bit : 0;
   }
   in.finish();
   return value;
}

} // namespace Kiv
