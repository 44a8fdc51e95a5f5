// panelkit: behaviour shared by every page: result messages, alerts, menus, tabs and read-only pages.
// Values come from the page's JSON data block; nothing here is inline in the page.
"use strict";

var FormMessageType = {
  StaticMessage: "static",
  SuccessMessage: "success",
  ErrorMessage: "failure",
  InfoMessage: "info"
};

// The values the server handed to this page's scripts.
function pageData() {
  var block = document.getElementById("panelkit_page_data");
  if (!block) {
    return {};
  }
  try {
    return JSON.parse(block.textContent) || {};
  } catch (e) {
    return {};
  }
}

function getFormElementByName(form, name) {
  if (!form || !form.elements) {
    return null;
  }
  return form.elements.namedItem(name);
}

// Shows text in the page's one result box (created when the page has none). Always as text, never as HTML.
function SetFormResultMsg(text, type) {
  var box = $("#config_pane .form_result_msg");
  if (box.length === 0) {
    box = $("<div></div>").insertAfter("#config_page_title");
  }
  var kind = type || FormMessageType.StaticMessage;
  var classes = kind === FormMessageType.StaticMessage ? "static" : kind + " static";
  box.first().attr("class", classes + " form_result_msg").text(text).show();
}

// Empties the result box, for example when the user changes tabs.
function ClearFormResultMsg() {
  $(".form_result_msg").text("").hide();
}

// Moves the banner below the alert and fades the alert in.
function repositionBanner() {
  var alerts = $("#alertsBox");
  $("#banner").css("margin-top", (alerts.outerHeight() || 0) + 10 + "px");
  alerts.fadeIn(800);
}

// Sub-pages of a menu entry show when their parent is selected or clicked.
function setUpMenus() {
  $("#nav li.parentSubMenu > a").on("click", function (event) {
    var children = $("#nav li.subMenu." + this.id);
    if (children.length > 0 && !$(this).attr("href")) {
      event.preventDefault();
    }
    children.toggle();
  });
  $("#nav li.selected.subMenu").each(function () {
    var classes = this.className.split(/\s+/);
    for (var i = 0; i < classes.length; i += 1) {
      if (classes[i].indexOf("menu_") === 0) {
        $("#nav li.subMenu." + classes[i]).show();
      }
    }
  });
  $("#nav li.selected.parentSubMenu").each(function () {
    $("#nav li.subMenu." + $(this).children("a").attr("id")).show();
  });
  $("#nav_toggle").on("click", function () {
    $("#nav").toggleClass("open");
  });
}

function setUpTabs(tabs) {
  var container = $("#tabcontainer");
  if (container.length === 0) {
    return;
  }
  container.tabs({
    active: tabs.selected || 0,
    show: { effect: "fade", duration: 150 },
    hide: { effect: "fade", duration: 150 },
    beforeActivate: function () {
      ClearFormResultMsg();
      container.trigger("panelkit:tabchange");
    }
  });
  container.show();
}

// A field that counts only while another field holds a value: its row hides and its input is
// disabled (so it is not posted) whenever that field holds anything else.
function setUpDependentFields() {
  $("tr[data-when-field]").each(function () {
    var row = $(this);
    var other = row.closest("form").find("[name='" + row.data("when-field") + "']");
    function follow() {
      var counts = other.val() === String(row.data("when-value"));
      row.find(":input").prop("disabled", !counts);
      row.toggle(counts);
    }
    other.on("change", follow);
    follow();
  });
}

// A button that cannot be undone asks first (its data-confirm question); nothing is sent unless agreed.
function setUpConfirmations() {
  $(document).on("click", "[data-confirm]", function (event) {
    if (!window.confirm($(this).data("confirm"))) {
      event.preventDefault();
    }
  });
}

// A number with limits (data-min, data-max) is checked before its form is posted: out of range, the input is
// marked with the server's words and nothing is sent.
function setUpRanges() {
  $(document).on("submit", "form", function (event) {
    var inRange = true;
    $(this.elements).filter("[data-min][data-max]:enabled").each(function () {
      var input = $(this);
      var min = Number(input.data("min"));
      var max = Number(input.data("max"));
      var text = String(input.val());
      var number = Number(text);
      var good = /^[0-9]+$/.test(text) && number >= min && number <= max;
      input.toggleClass("cppcms_error_msg", !good);
      input.nextAll("span.range_error").remove();
      if (!good) {
        $("<span class=\"cppcms_error_msg range_error\"></span>")
          .text("Invalid range; minimum " + min + ", maximum " + max)
          .insertAfter(input);
      }
      inRange = inRange && good;
    });
    if (!inRange) {
      event.preventDefault();
    }
  });
}

$(function () {
  var data = pageData();
  setUpDependentFields();
  setUpRanges();
  setUpConfirmations();
  setUpMenus();
  if (data.repositionBanner) {
    repositionBanner();
  }
  if (data.tabs) {
    setUpTabs(data.tabs);
  }
  if (data.readOnly) {
    $("#config_pane :input").prop("disabled", true);
  }
});
