/// @file
/// BgpParseExtCommContainerSm: builds and owns the recognition framework —
/// the registry, the seven kind plug-ins and the parser — in the one order that
/// equips every type rule as it is announced: registry, then plug-ins (route
/// origin, route target, tunnel encapsulation, default gateway, link
/// bandwidth, colour, origin validation state), then the parser.
///
/// @code{.cpp}
///   auto container = bgpParseExtCommContainerSmFactory();
///   auto parser = container->extCommParser();   // hand it to the interning tables
/// @endcode
///
/// The plug-ins sit in a queue indexed by 32-bit positions; Enq appends one
/// past the highest position in use, Deq removes the first. Single-threaded.
#pragma once

#include "QorBgpCommunity/QorBgp/Parse/ExtCommPluginBase.h"

namespace Routing::Bgp {

/// Builds and owns the recognition framework: the rule registry, the kind plug-ins and the
/// parser.
class QORBGP_EXPORT BgpParseExtCommContainerSm : public Kiv::Notifier {
 public:
   KIV_POINTER_TYPES(BgpParseExtCommContainerSm);
   using PluginPtrConst = BgpParseExtCommPluginBaseSm::PtrConst;

   /// Queue bookkeeping: the first position in use and one past the last.
   struct ExtCommParserSmsMetadata {
      U32 head = 0;
      U32 tail = 0;
      friend bool operator==(ExtCommParserSmsMetadata, ExtCommParserSmsMetadata) noexcept = default;
   };

   /// Observer of the plug-in queue; told of every position filled or emptied.
   class Notifiee : public Kiv::Notifiee {
    public:
      virtual void onExtCommParserSms(U32 const&) {}
   };

   /// Builds registry, plug-ins and parser.
   BgpParseExtCommContainerSm();
   ~BgpParseExtCommContainerSm() override;
   std::string_view fwkType() const noexcept;

   BgpParseExtCommRuleCollections::Ptr const& parseExtCommRuleCollections() const noexcept {
      return parseExtCommRuleCollections_;
   }
   /// Replaces the registry by a new, empty one.
   void parseExtCommRuleCollectionsIs();
   void parseExtCommRuleCollectionsDel() noexcept { parseExtCommRuleCollections_ = nullptr; }

   BgpParseExtendedCommunityRule::Ptr const& extCommParser() const noexcept { return extCommParser_; }
   /// Keeps the parser when its control equals `control`, else builds a new one.
   void extCommParserIs(BgpParseExtCommControl const& control);
   void extCommParserDel() noexcept { extCommParser_ = nullptr; }

   /// Appends at the next position and returns that position.
   U32 extCommParserSmsEnq(PluginPtrConst const& plugin);
   /// Removes the first plug-in of the queue, if any.
   void extCommParserSmsDeq();
   void extCommParserSmsIs(U32 position, PluginPtrConst const& plugin);
   void extCommParserSmsDel(U32 position);
   void extCommParserSmsDelAll();
   auto const& extCommParserSms() const noexcept { return extCommParserSms_; }
   ExtCommParserSmsMetadata extCommParserSmsMetadata() const noexcept { return metadata_; }
   void extCommParserSmsMetadataIs(ExtCommParserSmsMetadata metadata) noexcept {
      metadata_ = metadata;
   }

 private:
   void handleInitialized();
   void metadataAfterChange() noexcept;

   BgpParseExtCommRuleCollections::Ptr parseExtCommRuleCollections_;
   Kiv::NotifyingOrderedMap<U32, PluginPtrConst, Notifiee, &Notifiee::onExtCommParserSms>
      extCommParserSms_{*this};
   ExtCommParserSmsMetadata metadata_;
   BgpParseExtendedCommunityRule::Ptr extCommParser_;
};

/// A new container, fully built, with notification active.
QORBGP_EXPORT BgpParseExtCommContainerSm::Ptr bgpParseExtCommContainerSmFactory();

} // namespace Routing::Bgp
