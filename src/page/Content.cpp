// panelkit page: what a declared page renders: the common content, its forms, facts and command output.
#include "page/Content.h"

#include "page/Page.h"

namespace panelkit::page {

Content::Content(const Page& page) : page(page)
{
    // A page without forms still has an empty one, so that every hook sees a form.
    static const std::vector<Field> none;
    for (const auto& declared : page.Forms())
        forms.push_back(std::make_unique<Form>(declared.fields));
    if (forms.empty())
        forms.push_back(std::make_unique<Form>(none));
}

}  // namespace panelkit::page
