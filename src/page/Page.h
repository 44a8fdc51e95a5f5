// panelkit page: a whole page as a declaration: route and menu entry, title, forms of fields, hooks, status tab.
#pragma once

#include "page/Field.h"
#include "page/Output.h"

#include <json/value.h>

#include <functional>
#include <string>
#include <vector>

namespace panelkit::apps {
class Base;
}

namespace panelkit::page {

class Content;
class Form;

/// What a hook of a page sees of the request being served.
struct Call {
    /// The controller serving the request (request, response, settings, links).
    apps::Base& app;
    /// The page content being built.
    Content& content;
    /// The form the request posted, or the page's first form on a GET.
    Form& form;
    /// The groups of the route's expression.
    const std::vector<std::string>& args;
};

/// One page: everything that is its own, and nothing of the flow every page shares (see Runner).
class Page {
public:
    /// How the page is laid out.
    enum class Layout {
        Plain,      ///< the layout around the title only: no form, no status
        Form,       ///< one form of rows
        Tabbed,     ///< a status tab: a "Configuration" tab with the form and a "Status" tab
        MultiForm,  ///< several forms: one tab per form
    };
    /// An extra check after the fields' own; false refuses the post (the hook marks what failed).
    using Check = std::function<bool(Call&)>;
    /// A save of the page's own; false when a write failed.
    using Save = std::function<bool(Call&)>;
    /// Something done by the page.
    using Hook = std::function<void(Call&)>;
    /// An action that may answer the request itself (a download): true when it did.
    using Action = std::function<bool(Call&)>;

    /// One form of the page and what a post of it does.
    struct FormDeclaration {
        /// The id of the division around the form ("dns_server_config"), also its tab's anchor.
        std::string id;
        /// The tab's heading on a multi-form page.
        std::string tab;
        /// The posted name and value that tell this form was sent; empty for a page of one form.
        std::string submitName;
        std::string submitValue;
        /// A multipart post (a form with a file, or a download button).
        bool multipart = false;
        /// A part of the form declared before it: shown inside that form, told apart by its own submit.
        bool part = false;
        /// The id its tab's link points at, "" for the division id + "_tab".
        std::string tabId;
        /// On a page of several forms, the status shows in this form's tab under this heading.
        bool status = false;
        std::string statusHeading;
        /// The fields in the order they are shown.
        std::vector<Field> fields;
        /// The order in which the fields are stored, when it is not the order shown.
        std::vector<std::string> saveOrder;
        /// Extra checks after the fields' own.
        std::vector<Check> checks;
        /// A save of the page's own instead of storing the bound fields.
        Save save;
        /// The message of a successful save ("" for the standard one) and whether it needs a reboot.
        std::string savedText;
        bool reboot = false;
        /// Run after a successful save (apply the settings).
        Hook after;
        /// Run when the fields' own checks refused a post of the form.
        Hook invalid;
        /// After a successful save the form shows empty again (a form that adds rows).
        bool empty = false;
        /// After a post whose field holds the value, these fields are shown as stored.
        std::string reloadField;
        std::string reloadValue;
        std::vector<std::string> reloadNames;
    };

    /// A page reached as `pattern` below its controller and linked by mapper `name`.
    Page(const std::string& name, const std::string& title);

    /// The mapper pattern (default "/" + name) and the expressions that reach the page (default the pattern).
    Page& Route(const std::string& pattern, std::vector<std::string> expressions = {}, std::vector<int> groups = {});
    /// The entry of the controller's menu group ("" for none).
    Page& Menu(const std::string& text);
    /// The title made from the route's groups.
    Page& Title(std::function<std::string(const std::vector<std::string>&)> title);
    /// Renders through a named view of the skin.
    Page& View(const std::string& name);

    /// Starts the next form: its division id, tab heading and the submit that tells it was sent.
    Page& Form(const std::string& id, const std::string& tab = "", const std::string& submitName = "",
               const std::string& submitValue = "");
    /// Starts another part of the current form: shown in the same form and tab, with fields, checks and a save
    /// of its own, and told apart by its own submit.
    Page& Part(const std::string& submitName, const std::string& submitValue);
    /// The current form's tab is linked as "#" + id instead of its division id + "_tab".
    Page& TabId(const std::string& id);
    /// The current form is posted as multipart.
    Page& Multipart();
    /// Adds a field to the current form.
    Page& Add(Field field);
    /// The current form's fields are stored in this order.
    Page& SaveOrder(std::vector<std::string> names);
    /// An extra check of the current form.
    Page& Also(Check check);
    /// The current form saves its own way.
    Page& SaveWith(Save save);
    /// The message of a successful save of the current form, and whether it marks a reboot.
    Page& Saved(const std::string& text, bool reboot);
    /// Done after a successful save of the current form.
    Page& After(Hook hook);
    /// Done when the fields of the current form fail their own checks (before any extra check).
    Page& Invalid(Hook hook);
    /// After a successful save the current form shows empty again, ready for the next entry.
    Page& EmptyAfterSave();
    /// After a post of the current form whose field holds value, the named fields show what is stored.
    Page& ReloadAfterPost(const std::string& field, const std::string& value, std::vector<std::string> names);

    /// A button outside the forms' saving: when `name` is posted with `value`, the action runs (its call sees the
    /// current form, whose tab is shown when the action answers with the page).
    Page& On(const std::string& name, const std::string& value, Action action);
    /// Done on every request after the common content is prepared, before a post is handled: what the
    /// page shows whatever was posted. A message it sets gives way to the outcome of a post; a hook may
    /// answer the request itself (Content::answered), and then nothing more is done.
    Page& Prepare(Hook hook);
    /// A paragraph shown above the forms, with its class.
    Page& Intro(const std::string& text, const std::string& cssClass = "page_intro");
    /// A read-only row shown before the first form's fields.
    Page& Fact(const std::string& label, std::function<std::string()> value);

    /// The status tab: the JSON-RPC method it polls and the blocks of its reply, in the order shown.
    Page& Status(const std::string& method, std::vector<Output> blocks, const std::string& target = "");
    /// The status reply is made at once by `read`, members of any JSON type from one reading of the device; its
    /// renderer (Renderer) draws it.
    Page& StatusFrom(std::function<Json::Value()> read);
    /// The status tab's blocks are separated by line breaks.
    Page& Separated();
    /// On a page of several forms, the status shows in the current form's tab, under the heading.
    Page& StatusInTab(const std::string& heading);
    /// The text put before the reason when a status request fails ("Error retrieving status: " unless given).
    Page& StatusFailure(const std::string& text);
    /// A script of the page's own for a structured status reply (below the media root).
    Page& Renderer(const std::string& script);
    /// Command output made while the page renders, shown in the status tab (before or after the live status).
    Page& Diagnostics(const std::string& id, std::vector<Output> blocks, bool first = false);

    /// The mapper name.
    const std::string& Name() const { return name_; }
    /// The mapper pattern.
    const std::string& Pattern() const { return pattern_; }
    /// The dispatcher expressions.
    const std::vector<std::string>& Expressions() const { return expressions_; }
    /// The groups passed to the page from its expressions.
    const std::vector<int>& Groups() const { return groups_; }
    /// The menu text, "" when the page has no entry.
    const std::string& MenuText() const { return menu_; }
    /// The title for a request.
    std::string TitleFor(const std::vector<std::string>& args) const;
    /// The layout.
    Layout GetLayout() const;
    /// The index of the tab that shows the form.
    std::size_t TabOf(std::size_t form) const;
    /// The named view, "" for the default one.
    const std::string& ViewName() const { return view_; }
    /// The forms.
    const std::vector<FormDeclaration>& Forms() const { return forms_; }
    /// The buttons outside the forms: (name, value, action).
    struct Button {
        std::string name;
        std::string value;
        Action action;
        /// The form declared with it.
        std::size_t form;
    };
    /// The buttons outside the forms.
    const std::vector<Button>& Buttons() const { return buttons_; }
    /// The per-request hooks.
    const std::vector<Hook>& Preparations() const { return prepare_; }
    /// The paragraph above the forms and its class.
    const std::string& IntroText() const { return intro_; }
    const std::string& IntroClass() const { return introClass_; }
    /// The read-only rows.
    const std::vector<std::pair<std::string, std::function<std::string()>>>& Facts() const { return facts_; }

    /// The status method, "" when the page has no status tab.
    const std::string& StatusMethod() const { return method_; }
    /// The id of the division the status script fills.
    const std::string& StatusTarget() const { return target_; }
    /// The blocks of the status reply.
    const std::vector<Output>& StatusBlocks() const { return status_; }
    /// The status reply of one request: the page's own reading, or every block's text made in turn.
    Json::Value StatusReply() const;
    /// True when the status blocks are separated by line breaks.
    bool StatusSeparated() const { return separated_; }
    /// The text before the reason of a failed status request, "" for the common one.
    const std::string& StatusFailureText() const { return statusFailure_; }
    /// The page's own status script, "" for the common one.
    const std::string& StatusRenderer() const { return renderer_; }
    /// The diagnostics' division id, "" when the page has none.
    const std::string& DiagnosticsId() const { return diagnosticsId_; }
    /// The diagnostics' blocks.
    const std::vector<Output>& DiagnosticsBlocks() const { return diagnostics_; }
    /// True when the diagnostics come before the live status.
    bool DiagnosticsFirst() const { return diagnosticsFirst_; }

private:
    FormDeclaration& _Current();

    std::string name_;
    std::string title_;
    std::function<std::string(const std::vector<std::string>&)> titleOf_;
    std::string pattern_;
    std::vector<std::string> expressions_;
    std::vector<int> groups_;
    std::string menu_;
    std::string view_;
    std::vector<FormDeclaration> forms_;
    std::vector<Button> buttons_;
    std::vector<Hook> prepare_;
    std::string intro_;
    std::string introClass_;
    std::vector<std::pair<std::string, std::function<std::string()>>> facts_;
    std::string method_;
    std::string target_;
    std::vector<Output> status_;
    std::function<Json::Value()> read_;
    bool separated_ = false;
    std::string statusFailure_;
    std::string renderer_;
    std::string diagnosticsId_;
    std::vector<Output> diagnostics_;
    bool diagnosticsFirst_ = false;
};

}  // namespace panelkit::page
