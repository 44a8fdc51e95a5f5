// panelkit: the Firmware page: sends the image showing its progress, then follows the firmware tool until it ends.
"use strict";

var PanelkitFirmware = (function () {
  var barStates = ["done", "upgrading", "finishing", "ram", "flash"];

  function settings() {
    return pageData().page || {};
  }

  function showBar(state, received, size) {
    $("#tp").text(state);
    var width = size > 0 ? Math.max(1, Math.round((400 * received) / size)) : 1;
    $("#progressbar").css("width", Math.min(width, 400) + "px");
    $("#bytes").text(received + " / " + size);
  }

  function showProgressBlock() {
    $("#tabcontainer").hide();
    $(".progress_block").removeClass("hidden").show();
  }

  // The tool writes its status line in object notation with single quotes: read it as data, never as code.
  function parseToolStatus(text) {
    try {
      return JSON.parse(String(text).replace(/'/g, '"'));
    } catch (e) {
      return null;
    }
  }

  // Posts fw_upgrade_status every second until the tool is done (to the reboot page) or failed (back here).
  function followTool() {
    var config = settings();
    SetFormResultMsg("Please wait while firmware is upgraded", FormMessageType.StaticMessage);
    showProgressBlock();
    var request = JSON.stringify({ method: "fw_upgrade_status", params: [], id: 88 });
    function poll() {
      $.ajax({ url: config.statusUrl, type: "POST", contentType: "application/json", data: request, dataType: "json",
               timeout: 5000 })
        .done(function (reply) {
          var status = reply && parseToolStatus(reply.result);
          if (!status) {
            setTimeout(poll, 1000);
            return;
          }
          if (barStates.indexOf(status.state) >= 0) {
            showBar(status.state, status.received, status.size);
          } else {
            $("#tp").text(status.state);
          }
          if (status.state === "done") {
            SetFormResultMsg("Firmware upgraded successfully", FormMessageType.SuccessMessage);
            window.location.href = config.rebootUrl + "?type=finishedUpgrade";
            return;
          }
          if (status.state === "failed") {
            SetFormResultMsg("Upgrade Failed", FormMessageType.ErrorMessage);
            window.location.href = config.firmwareUrl + "?type=failedUpgrade";
            return;
          }
          setTimeout(poll, 1000);
        })
        // The service restarts to start the tool: it does not answer for a few seconds.
        .fail(function () {
          setTimeout(poll, 1000);
        });
    }
    setTimeout(poll, 1000);
  }

  function randomProgressId() {
    var bytes = new Uint8Array(16);
    window.crypto.getRandomValues(bytes);
    return Array.prototype.map.call(bytes, function (b) { return ("0" + b.toString(16)).slice(-2); }).join("");
  }

  // Behind the device's web server, its upload-progress service tells what arrived.
  function pollFrontServer(progressId) {
    var timer = setInterval(function () {
      $.ajax({ url: "/progress", type: "GET", dataType: "json", cache: false, headers: { "X-Progress-Id": progressId } })
        .done(function (upload) {
          if (!upload) {
            return;
          }
          showBar(upload.state, upload.received || 0, upload.size || 0);
          if (upload.state === "done") {
            $("#tp").text("Copying file: please wait...");
            clearInterval(timer);
          }
        });
    }, 1000);
    return timer;
  }

  // Sends the form with the browser's own upload progress; the reply is a whole page (the progress
  // page, or this page with what was wrong) and replaces this one.
  function upload(form) {
    var config = settings();
    var action = form.action;
    var timer = null;
    if (!config.internalServer) {
      var progressId = randomProgressId();
      action += (action.indexOf("?") < 0 ? "?" : "&") + "X-Progress-ID=" + progressId;
      timer = pollFrontServer(progressId);
    }
    SetFormResultMsg("Do not leave this page or file upload will fail", FormMessageType.StaticMessage);
    showProgressBlock();
    $("#tp").text("uploading");
    var xhr = new XMLHttpRequest();
    xhr.upload.addEventListener("progress", function (event) {
      if (event.lengthComputable) {
        showBar("uploading", event.loaded, event.total);
      }
    });
    xhr.upload.addEventListener("load", function () {
      $("#tp").text("Copying file: please wait...");
    });
    xhr.addEventListener("load", function () {
      if (timer !== null) {
        clearInterval(timer);
      }
      document.open();
      document.write(xhr.responseText);
      document.close();
    });
    xhr.addEventListener("error", function () {
      if (timer !== null) {
        clearInterval(timer);
      }
      $("#tabcontainer").show();
      $(".progress_block").hide();
      SetFormResultMsg("The upload failed: the device did not take the file", FormMessageType.ErrorMessage);
    });
    xhr.open("POST", action);
    xhr.send(new FormData(form));
  }

  function start() {
    var config = settings();
    if (config.progress) {
      followTool();
      return;
    }
    $("#firmware_form").on("submit", function (event) {
      if (!window.FormData || !window.XMLHttpRequest) {
        return;
      }
      event.preventDefault();
      var form = this;
      // So that the watchdog leaves the deployer alone while the image arrives.
      $.ajax({ url: config.statusUrl, type: "POST", contentType: "application/json",
               data: JSON.stringify({ method: "prepare_fw_upgrade", params: [], id: 20 }) })
        .always(function () {
          upload(form);
        });
    });
  }

  return { start: start, parseToolStatus: parseToolStatus };
})();

$(function () {
  PanelkitFirmware.start();
});
