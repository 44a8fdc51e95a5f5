// panelkit data: the Ethernet page.
#pragma once

#include "data/StatusPage.h"
#include "forms/Ethernet1.h"

namespace panelkit::data {

/// The Ethernet form and the diagnostic command outputs.
class Ethernet1 : public StatusPage<forms::Ethernet1> {
};

}  // namespace panelkit::data
