// What the recognition tests share: the dynamic type of a recognised value,
// and the text rows of the typed kinds' tests (a value, the format to render
// it in, or `diagnostic` for its toStrep(), and the exact text expected).
#pragma once

#include "QorBgpCommunity/QorBgp/QorBgpCommunity.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <typeindex>

namespace Routing::Bgp {

template <class T>
std::type_index typeOf() {
   return std::type_index(typeid(T));
}

template <class T>
std::type_index typeOf(Kiv::Ptr<T const> const& value) {
   return std::type_index(typeid(*value));
}

} // namespace Routing::Bgp

namespace Routing::Bgp::kindTexts {

using StrepFormat = ExtComm::StrepFormat;

inline constexpr U32 plain = 0;
inline constexpr U32 classified = StrepFormat::flagClassification;
inline constexpr U32 ui = classified | StrepFormat::flagUI;
inline constexpr U32 asdot = StrepFormat::flagAsdot;
inline constexpr U32 weighted = StrepFormat::flagLinkBwWeighted;
inline constexpr U32 everyFlag = StrepFormat::allFlags;
inline constexpr U32 diagnostic = ~0u;

struct Row {
   ExtComm::PtrConst comm;
   U32 format;
   char const* text;
};

inline void expectTexts(std::initializer_list<Row> rows) {
   for (Row const& row : rows) {
      SCOPED_TRACE(testing::Message() << row.comm->getContent() << " format " << row.format);
      std::string text = row.format == diagnostic
                            ? row.comm->toStrep()
                            : row.comm->toStrepForPolicy(StrepFormat(row.format));
      EXPECT_EQ(text, row.text);
   }
}

inline ExtCommContent content(U64 word) { return ExtCommContent(word); }

} // namespace Routing::Bgp::kindTexts
