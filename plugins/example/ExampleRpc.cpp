// Example plugin: a JSON-RPC method on the asynchronous tree.
#include "ExampleRpc.h"

#include "util/Pardb.h"

namespace example {

ExampleRpc::ExampleRpc(panelkit::web::Service& service) : JsonRpcServer(service)
{
    bind("example_status", &ExampleRpc::Status, this);
}

void ExampleRpc::Status()
{
    Json::Value result(Json::objectValue);
    result["plugin"] = "example";
    result["site"] = panelkit::util::Pardb::GetString("example/site_name");
    return_result(result);
}

}  // namespace example
