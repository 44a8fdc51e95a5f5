// panelkit: draws the NTP page's status: chronyd's state with its tracking, clock jump, sources and clients, or
// ntpd's state, synchronisation and peers. Every received text goes into the page with .text().
"use strict";

(function () {
  var section = PanelkitStatus.section;

  // The button that makes chronyd step the clock to a reachable source at once.
  var jump = {
    id: "status_ntp_manual_sync",
    name: "submit",
    value: "Jump system time",
    note: "(Synchronize system time immediately to a reachable source)"
  };

  function chronyd(result, target) {
    target.append(section("", result.running ? "Running" : "Stopped"));
    if (!result.running) {
      return;
    }
    target.append(section("Tracking", result.tracking));
    target.append(PanelkitStatus.buttonForm(jump));
    target.append(section("Sources", result.rawOutput));
    target.append(section("Clients", result.clients));
  }

  function synchronised(sync) {
    return sync ? "Synchronised" : "Not synchronised";
  }

  // One row of the table: the label as the heading over the text.
  function row(title, text) {
    return $("<tr></tr>").append($("<td></td>").append(section(title, text)));
  }

  function ntpd(result, target) {
    var table = $("<table class=\"shell_output\"></table>");
    table.append(row("Running", result.running ? "Yes" : "No"));
    if (result.running && result.hasGps) {
      table.append(row("GPS", synchronised(result.gpsSync)));
      table.append(row("PPS", synchronised(result.ppsSync)));
    }
    if (result.running) {
      table.append(row("Synchronised To", result.syncTo));
    }
    table.append(row("Raw Output", result.rawOutput));
    target.append(table);
  }

  PanelkitStatus.render = function (result, target) {
    target.append($("<h3></h3>").text("State"));
    if (result.isChronyd === true) {
      chronyd(result, target);
    } else {
      ntpd(result, target);
    }
  };
})();
