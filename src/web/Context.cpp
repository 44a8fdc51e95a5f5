// panelkit web layer: the request being served on this thread.
#include "web/Context.h"

#include "web/Error.h"

namespace panelkit::web {

namespace {
thread_local Context* t_current = nullptr;
}

Context::Context(Request& request, Response& response)
    : request_(request), response_(response), previous_(t_current)
{
    t_current = this;
}

Context::~Context()
{
    t_current = previous_;
}

Context& Context::Current()
{
    if (!t_current)
        throw Error("no request is being served on this thread");
    return *t_current;
}

bool Context::Active()
{
    return t_current != nullptr;
}

}  // namespace panelkit::web
