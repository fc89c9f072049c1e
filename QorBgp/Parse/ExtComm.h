/// @file
/// Recognition of typed extended communities: the rules, the registry they
/// announce themselves in, the parser, the plug-in base and the container that
/// builds them in order. Include this to use the recognition framework.
#pragma once

#include "QorBgpCommunity/QorBgp/Parse/ExtCommContainer.h"
#include "QorBgpCommunity/QorBgp/Parse/ExtCommParser.h"
#include "QorBgpCommunity/QorBgp/Parse/ExtCommPluginBase.h"
#include "QorBgpCommunity/QorBgp/Parse/ExtCommRuleBase.h"
#include "QorBgpCommunity/QorBgp/Parse/ExtCommRuleCollections.h"
