// panelkit views: the General page: identity, device name and live system status.
#pragma once

#include "data/General.h"
#include "views/StatusPage.h"

namespace panelkit::views {

/// The "General" view.
class General : public StatusPage {
public:
    /// A view of the General content.
    General(std::ostream& out, data::General& content, const web::Application& app);
    void render_status_tab() override;

protected:
    void render_config_rows() override;

private:
    data::General& page_;
};

}  // namespace panelkit::views
