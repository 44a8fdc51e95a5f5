// panelkit web layer: the stream buffer a request body is read through, whichever front end has it.
#include "web/RequestBodyBuffer.h"

#include <algorithm>

namespace panelkit::web {

RequestBodyBuffer::int_type RequestBodyBuffer::underflow()
{
    const std::streamsize got = Receive(buffer_, sizeof buffer_);
    if (got <= 0)
        return traits_type::eof();
    setg(buffer_, buffer_, buffer_ + got);
    return traits_type::to_int_type(buffer_[0]);
}

std::streamsize RequestBodyBuffer::xsgetn(char* to, std::streamsize count)
{
    std::streamsize done = std::min<std::streamsize>(count, egptr() - gptr());
    if (done > 0) {
        traits_type::copy(to, gptr(), static_cast<std::size_t>(done));
        gbump(static_cast<int>(done));
    }
    while (done < count) {
        const std::streamsize got = Receive(to + done, count - done);
        if (got <= 0)
            break;
        done += got;
    }
    return done;
}

}  // namespace panelkit::web
