// panelkit web layer: a file input checking the streamed upload's size, type, name and first bytes.
#include "web/widgets/File.h"

#include "web/Request.h"

#include <fstream>

namespace panelkit::web::widgets {

File::File() = default;
File::~File() = default;

void File::limits(std::int64_t min, std::int64_t max)
{
    min_ = min;
    max_ = max;
}

void File::filename(Pattern expression)
{
    filename_.emplace(std::move(expression));
}

void File::load(const Request& request)
{
    const UploadedFile* posted = request.file(name());
    // An empty file input still posts a part, without a file name and without content.
    if (!posted || (posted->filename.empty() && posted->size == 0)) {
        file_.reset();
        set(false);
        return;
    }
    file_ = std::make_unique<UploadedFile>(*posted);
    set(true);
}

bool File::magicMatches() const
{
    if (magics_.empty())
        return true;
    std::ifstream in(file_->path, std::ios::binary);
    for (const auto& magic : magics_) {
        std::string head(magic.size(), '\0');
        in.clear();
        in.seekg(0);
        if (in.read(&head[0], static_cast<std::streamsize>(head.size())) && head == magic)
            return true;
    }
    return false;
}

bool File::validate()
{
    if (!BaseWidget::validate())
        return false;
    if (!file_)
        return true;
    const auto size = static_cast<std::int64_t>(file_->size);
    const bool ok = size >= min_ && (max_ < 0 || size <= max_) && (mime_.empty() || file_->mime == mime_) &&
                    (!filename_ || filename_->matches(file_->filename)) && magicMatches();
    valid(ok);
    return ok;
}

void File::render_input(std::ostream& out) const
{
    out << "<input type=\"file\"";
    renderCommonAttributes(out);
    out << " />";
}

}  // namespace panelkit::web::widgets
