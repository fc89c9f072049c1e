/// @file
/// Fatal assertions for broken internal invariants. They are on in every build
/// type: a failed one prints "<unit>:<line>: assertion failed: <condition>" to
/// standard error and aborts the process. The condition is the stable part of
/// the message, exactly as the library fixes it; the unit and line locate the
/// check. Bad input from callers or from the wire is never asserted on; it is
/// an error result or an exception instead.
///
/// The unit is what the source file declares with QOR_ASSERT_UNIT (its module,
/// e.g. "QorBgpCommunityList"), so that moving a function between the files of
/// one module changes no message. A file that declares none, and code in
/// headers, print the file name without directory or extension.
///
/// @code{.cpp}
///   namespace Routing::Bgp {
///   QOR_ASSERT_UNIT("QorBgpCommunityList");
///   ...   QOR_ASSERT(commVectorSorted());
/// @endcode
#pragma once

#include "QorBgpCommunity/platform/Export.h"

#include <string_view>

namespace Kiv {

/// The source unit of a file path: its name without directory or extension
/// ("a/b/QorBgpSerialize.cpp" -> "QorBgpSerialize"). Points into `file`.
QORBGP_EXPORT std::string_view sourceUnit(std::string_view file) noexcept;

/// Prints "<unit>:<line>: assertion failed: <condition>" and aborts; the unit
/// is `unit`, or the source unit of `file` when `unit` is null. Safe to call
/// from any thread; never returns.
[[noreturn]] QORBGP_EXPORT void assertionFailed(char const* condition, char const* unit,
                                                char const* file, int line) noexcept;

} // namespace Kiv

/// The unit of code that declares none: found by unqualified lookup when no
/// QOR_ASSERT_UNIT is visible from the asserting code.
inline constexpr char const* qorAssertUnit = nullptr;

/// QOR_ASSERT_UNIT("Module"): declares the unit of the code after it in this
/// file. Use it inside the file's namespace (not the global one), after the
/// includes, so that code from headers keeps its own unit.
#define QOR_ASSERT_UNIT(name)                                                                      \
   namespace {                                                                                     \
   [[maybe_unused]] constexpr char const* qorAssertUnit = name;                                    \
   }                                                                                               \
   static_assert(true, "")

/// QOR_ASSERT(cond): the condition's source text is the message.
#define QOR_ASSERT(cond) QOR_ASSERT_TEXT(cond, #cond)

/// QOR_ASSERT_TEXT(cond, text): for conditions whose fixed message differs from
/// the expression that checks it.
#define QOR_ASSERT_TEXT(cond, text)                                                                \
   do {                                                                                            \
      if (!(cond)) [[unlikely]]                                                                    \
         ::Kiv::assertionFailed(text, qorAssertUnit, __FILE__, __LINE__);                          \
   } while (0)
