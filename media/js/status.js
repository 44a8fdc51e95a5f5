// panelkit: polls a page's status method over JSON-RPC while its status tab is visible, and shows its blocks.
// Every received text goes into the page with .text(): command output can carry device-collected names.
"use strict";

var PanelkitStatus = (function () {
  // A heading (none for an empty title) and a pre block holding the text.
  function section(title, text) {
    var block = $("<div class=\"status_section\"></div>");
    if (title) {
      block.append($("<h3></h3>").text(title));
    }
    return block.append($("<div class=\"command_output\"></div>").append($("<pre></pre>").text($.trim(text || ""))));
  }

  // A form posted to the page with one button and its note, carrying the token of the page's own forms.
  function buttonForm(button) {
    var form = $("<form method=\"post\" action=\"\"></form>");
    form.append($("<input type=\"hidden\" name=\"_csrf\" />").val($("input[name=_csrf]").first().val() || ""));
    form.append($("<input type=\"submit\" />").attr({ id: button.id, name: button.name }).val(button.value));
    return form.append(" ").append($("<span class=\"status_note\"></span>").text(button.note || ""));
  }

  function showError(target, failure, text) {
    target.empty().append($("<div class=\"status_error\"></div>").text(failure + text));
  }

  // Polls settings.method every settings.interval ms while #settings.target is visible;
  // render(result, target) fills the target with the reply; a failure shows settings.failure and the reason.
  function poll(settings, render) {
    var target = $("#" + settings.target);
    var interval = settings.interval || 1000;
    var requestId = 2;
    var failure = settings.failure || "Error retrieving status: ";

    function rearm() {
      setTimeout(tick, interval);
    }

    function tick() {
      if (!target.is(":visible")) {
        rearm();
        return;
      }
      $.ajax({
        url: settings.url,
        type: "POST",
        contentType: "application/json; charset=UTF-8",
        dataType: "json",
        data: JSON.stringify({ method: settings.method, params: [], id: requestId })
      }).done(function (data) {
        if (data && data.error == null) {
          target.empty();
          render(data.result, target);
        } else {
          showError(target, failure, data ? String(data.error) : "no reply");
        }
      }).fail(function (xhr, status, error) {
        showError(target, failure, (error || status) + " [" + xhr.status + "]");
      }).always(rearm);
    }

    rearm();
  }

  // The blocks a page declared, in order: each reply member under its heading; a member
  // missing from the reply is left out.
  function sections(settings) {
    return function (result, target) {
      var shown = 0;
      $.each(settings.sections || [], function (i, block) {
        if (result[block.member] === undefined) {
          return;
        }
        if (shown > 0 && settings.separated) {
          target.append("<br />");
        }
        target.append(section(block.title, result[block.member]));
        shown += 1;
      });
    };
  }

  return { poll: poll, section: section, buttonForm: buttonForm, sections: sections };
})();

// A page with a renderer of its own registers it as PanelkitStatus.render before the page is ready.
$(function () {
  var settings = pageData().status;
  if (settings) {
    PanelkitStatus.poll(settings, PanelkitStatus.render || PanelkitStatus.sections(settings));
  }
});
