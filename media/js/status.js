// panelkit: polls a page's status method over JSON-RPC while its status tab is visible.
// Every received text goes into the page with .text(): command output can carry device-collected names.
"use strict";

var PanelkitStatus = (function () {
  // A heading and a pre block holding the text.
  function section(title, text) {
    return $("<div class=\"status_section\"></div>")
      .append($("<h3></h3>").text(title))
      .append($("<div class=\"command_output\"></div>").append($("<pre></pre>").text($.trim(text || ""))));
  }

  function showError(target, text) {
    target.empty().append($("<div class=\"status_error\"></div>").text("Error retrieving status: " + text));
  }

  // Polls settings.method every settings.interval ms while #settings.target is visible;
  // render(result, target) fills the target with the reply.
  function poll(settings, render) {
    var target = $("#" + settings.target);
    var interval = settings.interval || 1000;
    var requestId = 2;

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
          showError(target, data ? String(data.error) : "no reply");
        }
      }).fail(function (xhr, status, error) {
        showError(target, (error || status) + " [" + xhr.status + "]");
      }).always(rearm);
    }

    rearm();
  }

  return { poll: poll, section: section };
})();
