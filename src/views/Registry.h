// panelkit views: the named views of the skin "panelkit", each checked against its content type.
#pragma once

#include "views/Base.h"

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace panelkit::views {

/// Views by name, registered once at start; rendering checks that the content fits the view.
class Registry {
public:
    /// Builds a view on a stream for a content record.
    using Builder = std::function<std::unique_ptr<Base>(std::ostream&, data::Base&, const web::Application&)>;

    /// The skin "panelkit" with every built-in view.
    static const Registry& Instance();
    /// The skin's name.
    static const char* Skin() { return "panelkit"; }

    /// Adds a view of a content type under a name.
    template <class View, class Content>
    void add(const std::string& name)
    {
        add(name, [name](std::ostream& out, data::Base& content, const web::Application& app) {
            auto* typed = dynamic_cast<Content*>(&content);
            if (!typed)
                WrongContent(name);
            return std::unique_ptr<Base>(new View(out, *typed, app));
        });
    }
    /// Adds a view builder under a name.
    void add(const std::string& name, Builder builder);
    /// Renders the named view; throws web::Error for an unknown name or content of the wrong type.
    void Render(const std::string& name, std::ostream& out, data::Base& content, const web::Application& app) const;
    /// The registered names in registration order.
    std::vector<std::string> Names() const;

private:
    [[noreturn]] static void WrongContent(const std::string& name);

    std::vector<std::pair<std::string, Builder>> views_;
};

}  // namespace panelkit::views
