// panelkit web layer: a JSON-RPC 1.0-style server application with methods bound by name.
#pragma once

#include "web/Application.h"

#include <json/json.h>

#include <functional>
#include <map>
#include <string>

namespace panelkit::web {

/// Answers POSTed "application/json" requests {"method","params","id"} with {"id","result","error"}.
/// Handlers run concurrently when the application is shared; the call in progress is per thread.
class JsonRpcServer : public Application {
public:
    /// A bound method: receives the parameter array, already checked for its length.
    using Method = std::function<void(const Json::Value& params)>;

    /// A server of the given service.
    explicit JsonRpcServer(Service& service);

    void main(const std::string& url) override;

    /// Binds a method taking `arity` parameters.
    void bind(const std::string& name, int arity, Method method);
    /// Binds a member function taking 0 to 4 string parameters.
    template <class C, class... Args>
    void bind(const std::string& name, void (C::*member)(Args...), C* object)
    {
        bind(name, static_cast<int>(sizeof...(Args)), [member, object](const Json::Value& params) {
            CallWithStrings(object, member, params, std::index_sequence_for<Args...>{});
        });
    }

    /// Answers the call in progress with a result.
    void return_result(const Json::Value& result);
    /// Answers the call in progress with an error text.
    void return_error(const std::string& message);

private:
    template <class C, class Member, std::size_t... I>
    static void CallWithStrings(C* object, Member member, const Json::Value& params, std::index_sequence<I...>)
    {
        (object->*member)(StringParam(params, I)...);
    }
    static std::string StringParam(const Json::Value& params, std::size_t index);
    void reply(int status, const Json::Value& id, const Json::Value& result, const Json::Value& error);

    struct Binding {
        int arity;
        Method method;
    };
    std::map<std::string, Binding> methods_;
};

}  // namespace panelkit::web
