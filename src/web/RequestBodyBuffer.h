// panelkit web layer: the stream buffer a request body is read through, whichever front end has it.
#pragma once

#include <streambuf>

namespace panelkit::web {

/// Small reads (a form's bytes one by one) go through a buffer of its own; large ones (an upload's
/// blocks) go from the source straight into the reader's memory.
class RequestBodyBuffer : public std::streambuf {
protected:
    /// Reads up to count bytes (count > 0) from the source; 0 at its end.
    virtual std::streamsize Receive(char* to, std::streamsize count) = 0;

    int_type underflow() override;
    std::streamsize xsgetn(char* to, std::streamsize count) override;

private:
    char buffer_[8192];
};

}  // namespace panelkit::web
