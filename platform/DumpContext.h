/// @file
/// The object dump: a diagnostic text of an object graph, written line by line
/// by each object's dumpState(ctx, indent). The context collects the text,
/// counts its lines and remembers which objects it has printed, so that an
/// object reached twice (or through a cycle) is printed once and later only
/// referred to by the line where its dump started.
#pragma once

#include "QorBgpCommunity/platform/Export.h"
#include "QorBgpCommunity/platform/Ptr.h"

#include <concepts>
#include <iosfwd>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>

namespace Kiv {

class DumpContext;

/// An object that can appear in a dump.
template <class T>
concept Dumpable = requires(T const& object, DumpContext& ctx, unsigned indent) {
   { object.fwkType() } -> std::convertible_to<std::string_view>;
   object.dumpState(ctx, indent);
};

/// Collects one dump. Every writer takes an indent: that many spaces start the
/// text (none for 0); the text itself says whether the line ends.
///
/// @code{.cpp}
///   void Table::dumpState(Kiv::DumpContext& ctx, unsigned indent) const {
///      ctx.printf(indent, "Table #%u:\n", id_);
///      ctx.child(entries_, indent + 2);
///   }
///   Kiv::DumpContext ctx;
///   ctx.child(table, 0);
///   ctx.writeTo(std::cerr);
/// @endcode
///
/// A plain single-threaded value; one context per dump.
class QORBGP_EXPORT DumpContext {
 public:
   DumpContext() = default;

   /// The 1-based number of the line being written: the count of '\n' so far
   /// plus one.
   unsigned lineNumber() const noexcept { return newlines_ + 1; }

   /// `indent` spaces, then `text`.
   void write(unsigned indent, std::string_view text);
   /// `indent` spaces, `text` and '\n'.
   void line(unsigned indent, std::string_view text);
   /// `indent` spaces, then the C library's printf text of `format`.
   void printf(unsigned indent, char const* format, ...) __attribute__((format(printf, 3, 4)));

   /// Dumps `object` as a child at `indent`:
   /// @code{.unparsed}
   ///   null                          "NULL\n"
   ///   printed before in this dump   "<fwkType> dumped at line <n>\n"
   ///   otherwise                     object->dumpState(*this, indent)
   /// @endcode
   /// An object counts as printed from the line where its dump starts, before
   /// its dumpState runs, so a cycle back to it ends in a back-reference.
   template <Dumpable T>
   void child(T const* object, unsigned indent) {
      if (!object) {
         nullChild(indent);
         return;
      }
      if (printedBefore(identity(object), object->fwkType(), indent)) {
         return;
      }
      object->dumpState(*this, indent);
   }
   template <Dumpable T>
   void child(Ptr<T> const& object, unsigned indent) {
      child(static_cast<T const*>(object.get()), indent);
   }

   std::string_view text() const noexcept { return text_; }
   std::string str() const { return text_; }
   void writeTo(std::ostream& os) const;

 private:
   /// The address of the whole object, so that one reached through different
   /// bases is still one object.
   template <class T>
   static void const* identity(T const* object) {
      if constexpr (std::is_polymorphic_v<T>) {
         return dynamic_cast<void const*>(object);
      } else {
         return object;
      }
   }

   void nullChild(unsigned indent);
   /// Prints the back-reference and returns true when `object` was printed
   /// before; otherwise marks it printed at the current line.
   bool printedBefore(void const* object, std::string_view type, unsigned indent);

   std::string text_;
   unsigned newlines_ = 0;                             ///< '\n' characters in text_
   std::unordered_map<void const*, unsigned> printed_; ///< object -> line of its dump
};

QORBGP_EXPORT std::ostream& operator<<(std::ostream& os, DumpContext const& ctx);

} // namespace Kiv
