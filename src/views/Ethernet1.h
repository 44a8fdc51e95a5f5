// panelkit views: the Ethernet page: configuration, live status and diagnostic command output.
#pragma once

#include "data/Ethernet1.h"
#include "views/StatusPage.h"

namespace panelkit::views {

/// The "Ethernet1" view.
class Ethernet1 : public StatusPage {
public:
    /// A view of the Ethernet content.
    Ethernet1(std::ostream& out, data::Ethernet1& content, const web::Application& app);
    void render_status_tab() override;

private:
    data::Ethernet1& page_;
};

}  // namespace panelkit::views
