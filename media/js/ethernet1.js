// panelkit: the Ethernet page: live interface status, and the address rows follow the addressing mode.
"use strict";

$(function () {
  var data = pageData();
  PanelkitStatus.poll(data.status, function (result, target) {
    if (result.brctl !== undefined) {
      target.append(PanelkitStatus.section("Bridge Setup", result.brctl));
      target.append(PanelkitStatus.section("Bridge Interface", result.br1));
    }
    target.append(PanelkitStatus.section("Ethernet1 Interface", result.eth1));
    target.append(PanelkitStatus.section("Ethernet1 Settings", result.ethtool));
  });

  function followMode() {
    var dhcp = $("select[name='addressMode']").val() === "dhcp";
    $.each(["ipAddress", "netmask", "gateway"], function (i, name) {
      var input = $("[name='" + name + "']");
      input.prop("disabled", dhcp);
      input.closest("tr").toggle(!dhcp);
    });
  }
  $("select[name='addressMode']").on("change", followMode);
  followMode();
});
