// panelkit: the DNS server page's status: the resolver configuration in use.
"use strict";

$(function () {
  PanelkitStatus.poll(pageData().status, function (result, target) {
    target.append(PanelkitStatus.section("DNS Settings", result.currentConf));
  });
});
