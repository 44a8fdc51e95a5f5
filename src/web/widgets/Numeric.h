// panelkit web layer: a number input with a range; text that is not a number fails.
#pragma once

#include "web/Html.h"
#include "web/Request.h"
#include "web/widgets/BaseWidget.h"

#include <limits>
#include <type_traits>

namespace panelkit::web::widgets {

/// A number of type T (int or unsigned int) within [low, high].
template <class T>
class Numeric : public BaseWidget {
    static_assert(std::is_same<T, int>::value || std::is_same<T, unsigned int>::value, "int or unsigned int");

public:
    /// The number.
    T value() const { return value_; }
    /// Sets the number and marks the widget as holding a value.
    void value(T number)
    {
        value_ = number;
        text_ = std::to_string(number);
        parsed_ = true;
        set(true);
    }
    /// The allowed range.
    void range(T low, T high)
    {
        low_ = low;
        high_ = high;
    }
    /// The smallest allowed number.
    T low() const { return low_; }
    /// The largest allowed number.
    T high() const { return high_; }

    void load(const Request& request) override
    {
        text_ = request.post(name());
        set(!text_.empty());
        parsed_ = !set() || Parse(text_, value_);
    }

    bool validate() override
    {
        valid(parsed_ && BaseWidget::validate() && (!set() || (value_ >= low_ && value_ <= high_)));
        return valid();
    }

    void render_input(std::ostream& out) const override
    {
        out << "<input type=\"text\"";
        renderCommonAttributes(out);
        out << " value=\"" << Html::Escaped{text_} << "\" />";
    }

private:
    // Decimal digits with an optional sign only: no blanks, separators or trailing text.
    static bool Parse(const std::string& text, T& out)
    {
        const bool negative = !text.empty() && text[0] == '-';
        const std::size_t first = (negative || (!text.empty() && text[0] == '+')) ? 1 : 0;
        if (first >= text.size() || (negative && std::is_unsigned<T>::value))
            return false;
        long long number = 0;
        for (std::size_t i = first; i < text.size(); ++i) {
            if (text[i] < '0' || text[i] > '9')
                return false;
            number = number * 10 + (text[i] - '0');
            if (number > static_cast<long long>(std::numeric_limits<T>::max()) + 1)
                return false;
        }
        number = negative ? -number : number;
        if (number < static_cast<long long>(std::numeric_limits<T>::min()) ||
            number > static_cast<long long>(std::numeric_limits<T>::max()))
            return false;
        out = static_cast<T>(number);
        return true;
    }

    T value_{};
    T low_ = std::numeric_limits<T>::min();
    T high_ = std::numeric_limits<T>::max();
    std::string text_;
    bool parsed_ = true;
};

}  // namespace panelkit::web::widgets
