// panelkit: the General page's status: date, uptime, board temperature, processes.
"use strict";

$(function () {
  PanelkitStatus.poll(pageData().status, function (result, target) {
    target.append(PanelkitStatus.section("Date", result.date));
    target.append("<br />");
    target.append(PanelkitStatus.section("Uptime", result.uptime));
    target.append("<br />");
    target.append(PanelkitStatus.section("Board Temperature", result.boardTemp));
    target.append("<br />");
    target.append(PanelkitStatus.section("Top", result.top));
    target.append("<br />");
    target.append(PanelkitStatus.section("Process Status", result.processStatus));
  });
});
