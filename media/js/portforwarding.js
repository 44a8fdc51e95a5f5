// panelkit: the Port Forwarding page: Edit turns a user rule's row into its edit row in place, without a round trip;
// Cancel puts the row back. Save posts the row's form as the server's own edit row would.
"use strict";

(function () {
  var restore = null;

  function hidden(form, name, value) {
    return $("<input type=\"hidden\" />").attr({ name: name, value: value }).appendTo(form);
  }

  function input(form, name, id, value) {
    return $("<input type=\"text\" />").attr({ name: name, id: id, form: form.attr("id") }).val(value);
  }

  function cancel() {
    if (restore) {
      restore();
      restore = null;
    }
  }

  function edit(row) {
    cancel();
    var form = row.find("form");
    var saved = row.html();
    var cells = row.children("td");
    var ip = form.find("input[name='destinationIP']");
    var port = form.find("input[name='destinationPort']");
    ["protocol", "sourcePort", "destinationIP", "destinationPort"].forEach(function (name) {
      hidden(form, name + "Old", form.find("input[name='" + name + "']").val());
    });
    cells.eq(3).empty().append(input(form, "destinationIP", "cfg_pfw_dest_ip", ip.val()));
    cells.eq(4).empty().append(input(form, "destinationPort", "cfg_pfw_dest_port", port.val())
      .attr({ "data-min": 1, "data-max": 65535 }));
    ip.remove();
    port.remove();
    form.find("input[name='editing']").val("true");
    form.find("input[type='submit']").remove();
    form.append($("<input type=\"submit\" name=\"save\" id=\"cfg_pfw_save\" value=\"Save\" />"));
    form.append($("<input type=\"submit\" name=\"cancel\" id=\"cfg_pfw_cancel\" value=\"Cancel\" />")
      .on("click", function (event) {
        event.preventDefault();
        cancel();
      }));
    restore = function () {
      row.html(saved);
    };
    cells.eq(3).find("input").trigger("focus");
  }

  $(function () {
    $("#forwarding_form").on("click", "tr.forwarding_form_row input[name='edit']", function (event) {
      event.preventDefault();
      edit($(this).closest("tr"));
    });
  });
})();
