// panelkit web layer: a file input checking the streamed upload's size, type, name and first bytes.
#pragma once

#include "web/Pattern.h"
#include "web/UploadedFile.h"
#include "web/widgets/BaseWidget.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace panelkit::web::widgets {

/// A file upload; the file itself stays on disk where the request put it.
class File : public BaseWidget {
public:
    File();
    ~File() override;

    /// The uploaded file, or nullptr when none was posted.
    const UploadedFile* value() const { return file_ ? &*file_ : nullptr; }
    /// Allowed size in bytes; max -1 means unbounded.
    void limits(std::int64_t min, std::int64_t max);
    /// Requires exactly this MIME type ("" accepts any).
    void mime(const std::string& type) { mime_ = type; }
    /// Requires the browser's file name to match the expression (whole name).
    void filename(Pattern expression);
    /// Adds an accepted beginning of the content; when any are given, one must match.
    void add_valid_magic(const std::string& bytes) { magics_.push_back(bytes); }

    void load(const Request& request) override;
    bool validate() override;
    void render_input(std::ostream& out) const override;

private:
    bool magicMatches() const;

    std::unique_ptr<UploadedFile> file_;
    std::int64_t min_ = 0;
    std::int64_t max_ = -1;
    std::string mime_;
    std::optional<Pattern> filename_;
    std::vector<std::string> magics_;
};

}  // namespace panelkit::web::widgets
