// panelkit apps: the JSON-RPC status service the page scripts poll.
#include "apps/JsonRpc.h"

#include "util/Util.h"
#include "web/Service.h"

namespace panelkit::apps {

JsonRpc::JsonRpc(web::Service& service) : web::JsonRpcServer(service)
{
    bind("reload", &JsonRpc::Reload, this);
}

void JsonRpc::Reload()
{
    util::MarkForceReload(true);
    service().shutdown();
}

}  // namespace panelkit::apps
