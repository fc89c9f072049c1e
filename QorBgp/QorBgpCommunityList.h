/// @file
/// The community lists of one path, and their interning tables: standard
/// (CommList), large (LargeCommList) and extended (ExtCommList) lists. Include
/// this header to use any of them.
///
/// @code{.cpp}
///   auto table = commListDedupTableFactory();
///   CommList::Ptr list = commListFactory();
///   list->commIs(communityNoExport);
///   CommList::PtrConst shared = list->dedup(table.get());   // continue with this
/// @endcode
#pragma once

#include "QorBgpCommunity/QorBgp/QorBgpCommunityListDedupTable.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityListLarge.h"
#include "QorBgpCommunity/QorBgp/QorBgpCommunityListStandard.h"

#include "QorBgpCommunity/QorBgp/QorBgpCommunityListExtDedupTable.h"
