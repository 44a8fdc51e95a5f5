// panelkit data: the DNS server page.
#pragma once

#include "data/StatusPage.h"
#include "forms/DNSServer.h"

namespace panelkit::data {

/// The DNS form; its status comes from the JSON-RPC endpoint.
class DNSServer : public StatusPage<forms::DNSServer> {
};

}  // namespace panelkit::data
