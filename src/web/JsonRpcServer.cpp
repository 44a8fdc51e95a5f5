// panelkit web layer: a JSON-RPC 1.0-style server application with methods bound by name.
#include "web/JsonRpcServer.h"

#include "web/Log.h"
#include "web/Request.h"
#include "web/Response.h"

#include <memory>

namespace panelkit::web {

namespace {

// Thrown by a handler's parameter conversion; answered as a call error.
struct CallError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The call being served on this thread: its id, and whether it was answered.
struct Call {
    Json::Value id;
    bool answered = false;
};
thread_local Call* t_call = nullptr;

}  // namespace

JsonRpcServer::JsonRpcServer(Service& service) : Application(service)
{
}

void JsonRpcServer::bind(const std::string& name, int arity, Method method)
{
    methods_[name] = {arity, std::move(method)};
}

std::string JsonRpcServer::StringParam(const Json::Value& params, std::size_t index)
{
    const Json::Value& value = params[static_cast<Json::ArrayIndex>(index)];
    if (!value.isString())
        throw CallError("Invalid parameter type");
    return value.asString();
}

void JsonRpcServer::reply(int status, const Json::Value& id, const Json::Value& result, const Json::Value& error)
{
    Json::Value envelope(Json::objectValue);
    envelope["id"] = id;
    envelope["result"] = result;
    envelope["error"] = error;
    Json::StreamWriterBuilder writer;
    writer["indentation"] = "";
    Response& out = response();
    out.reset();
    out.status(status);
    out.contentType("application/json");
    out.out() << Json::writeString(writer, envelope);
}

void JsonRpcServer::return_result(const Json::Value& result)
{
    if (!t_call || t_call->answered)
        return;
    t_call->answered = true;
    reply(200, t_call->id, result, Json::Value());
}

void JsonRpcServer::return_error(const std::string& message)
{
    if (!t_call || t_call->answered)
        return;
    t_call->answered = true;
    reply(200, t_call->id, Json::Value(), Json::Value(message));
}

void JsonRpcServer::main(const std::string&)
{
    const Request& in = request();
    if (in.method() != "POST") {
        response().setHeader("Allow", "POST");
        reply(405, Json::Value(), Json::Value(), "JSON-RPC requests are POSTed");
        return;
    }
    if (in.contentType() != "application/json") {
        reply(415, Json::Value(), Json::Value(), "JSON-RPC requests must be application/json");
        return;
    }
    Json::Value call;
    std::string errors;
    Json::CharReaderBuilder builder;
    std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    const std::string& body = in.body();
    if (!reader->parse(body.data(), body.data() + body.size(), &call, &errors) || !call.isObject()) {
        reply(400, Json::Value(), Json::Value(), "Invalid JSON-RPC request: the body is not a JSON object");
        return;
    }
    if (!call["method"].isString() || !(call["params"].isArray() || call["params"].isNull())) {
        reply(400, call.get("id", Json::Value()), Json::Value(),
              "Invalid JSON-RPC request: \"method\" must be a string and \"params\" an array");
        return;
    }
    if (call["id"].isNull()) {
        reply(400, Json::Value(), Json::Value(), "Notifications are not served");
        return;
    }
    const std::string name = call["method"].asString();
    auto it = methods_.find(name);
    if (it == methods_.end()) {
        reply(200, call["id"], Json::Value(), "Method not found: " + name);
        return;
    }
    const Json::Value params = call["params"].isArray() ? call["params"] : Json::Value(Json::arrayValue);
    if (static_cast<int>(params.size()) != it->second.arity) {
        reply(200, call["id"], Json::Value(), "Invalid parametres number");
        return;
    }

    Call current{call["id"]};
    t_call = &current;
    struct Reset {
        ~Reset() { t_call = nullptr; }
    } reset;
    try {
        it->second.method(params);
    } catch (const CallError& e) {
        current.answered = false;
        return_error(e.what());
        return;
    }
    if (!current.answered)
        return_result(Json::Value());
}

}  // namespace panelkit::web
