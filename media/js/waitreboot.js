// panelkit: the waiting page after a reboot: counts down, then returns to the device once it answers again.
"use strict";

$(function () {
  var waitSeconds = pageData().rebootWaitSec || 100;
  var count = 0;
  var probing = false;
  var done = false;
  var timer = null;

  function finish() {
    done = true;
    clearInterval(timer);
  }

  function probe() {
    if (done) {
      return;
    }
    probing = true;
    $.ajax({ url: "/", type: "GET", timeout: 5000, cache: false })
      .done(function (body, status, xhr) {
        if (xhr.status === 200 && !done) {
          SetFormResultMsg("Device has finished rebooting ", FormMessageType.SuccessMessage);
          finish();
          window.location.href = window.location.protocol + "//" + window.location.host + "/";
          return;
        }
        probe();
      })
      .fail(function () {
        setTimeout(probe, 1000);
      });
  }

  function tick() {
    count += 1;
    if (count > waitSeconds) {
      var current = $.trim($("div#lan_ipaddr").text());
      var stored = $.trim($("div#pardb_lan_ipaddr").text());
      if (current === window.location.hostname && stored !== "" && stored !== current) {
        SetFormResultMsg("Redirecting to " + stored, FormMessageType.StaticMessage);
        window.location.href = "http://" + stored + "/";
      } else {
        SetFormResultMsg("ERROR: Device is not responding", FormMessageType.ErrorMessage);
      }
      finish();
      return;
    }
    SetFormResultMsg("Device is rebooting... " + (waitSeconds - count), FormMessageType.StaticMessage);
    if (count >= 20 && !probing) {
      probe();
    }
  }

  var form = document.forms[0];
  if (form && getFormElementByName(form, "reboot") && /(^|[?&])reboot_done=1(&|$)/.test(window.location.search)) {
    SetFormResultMsg("Device has finished rebooting ", FormMessageType.SuccessMessage);
    $(getFormElementByName(form, "reboot")).closest("tr").hide();
  }
  timer = setInterval(tick, 1000);
  $("#banner, #content, #footer").fadeOut(500);
});
