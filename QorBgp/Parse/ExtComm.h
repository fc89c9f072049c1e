// Recognition of typed extended communities: the rules, the registry they
// announce themselves in, the parser, the plug-in base and the container that
// builds them in order. Include this to use the recognition framework.
#pragma once

#include "QorBgp/Parse/ExtCommContainer.h"
#include "QorBgp/Parse/ExtCommParser.h"
#include "QorBgp/Parse/ExtCommPluginBase.h"
#include "QorBgp/Parse/ExtCommRuleBase.h"
#include "QorBgp/Parse/ExtCommRuleCollections.h"
