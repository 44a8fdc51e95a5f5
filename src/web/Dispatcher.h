// panelkit web layer: routes a URL to the first handler whose expression matches it whole.
#pragma once

#include "web/Pattern.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace panelkit::web {

/// Perl-style expressions tried in assignment order against the whole URL; a handler
/// receives up to four of the expression's groups as strings (an unmatched group gives "").
class Dispatcher {
public:
    /// A handler receiving the selected groups in order.
    using Handler = std::function<void(const std::vector<std::string>&)>;

    /// Binds an expression to a handler without arguments.
    void assign(const std::string& expression, std::function<void()> handler);
    /// Binds an expression to a handler of one group.
    void assign(const std::string& expression, std::function<void(std::string)> handler, int g1);
    /// Binds an expression to a handler of two groups.
    void assign(const std::string& expression, std::function<void(std::string, std::string)> handler, int g1, int g2);
    /// Binds an expression to a handler of three groups.
    void assign(const std::string& expression, std::function<void(std::string, std::string, std::string)> handler,
                int g1, int g2, int g3);
    /// Binds an expression to a handler of four groups.
    void assign(const std::string& expression,
                std::function<void(std::string, std::string, std::string, std::string)> handler, int g1, int g2,
                int g3, int g4);
    /// Binds an expression to a handler of a member function taking 0 to 4 strings, with the groups to pass.
    template <class C, class... Args, class... Groups>
    void assign(const std::string& expression, void (C::*member)(Args...), C* object, Groups... groups)
    {
        static_assert(sizeof...(Args) == sizeof...(Groups), "one group per handler argument");
        const std::vector<int> selected{groups...};
        add(expression, selected, [member, object](const std::vector<std::string>& values) {
            Call(object, member, values, std::index_sequence_for<Args...>{});
        });
    }
    /// Adds an entry: the groups to pass and the handler that receives them.
    void add(const std::string& expression, std::vector<int> groups, Handler handler);
    /// Calls the first matching handler; false when none matches.
    bool dispatch(const std::string& url) const;

private:
    struct Entry {
        Pattern expression;
        std::vector<int> groups;
        Handler handler;
    };

    template <class C, class Member, std::size_t... I>
    static void Call(C* object, Member member, const std::vector<std::string>& values, std::index_sequence<I...>)
    {
        (object->*member)(values[I]...);
    }

    std::vector<Entry> entries_;
};

}  // namespace panelkit::web
