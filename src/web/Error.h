// panelkit web layer: exceptions that remember where they were thrown.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace panelkit::web {

/// An exception carrying the call stack of its throw point, so that the
/// process entry can log where a failed start came from.
class Error : public std::runtime_error {
public:
    explicit Error(const std::string& what);
    /// The frames captured at construction, as symbol texts.
    std::vector<std::string> StackTrace() const;

private:
    std::vector<void*> frames_;
};

}  // namespace panelkit::web
