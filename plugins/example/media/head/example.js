// Example plugin: marks pages that loaded the plugin's script.
"use strict";
$(function () {
  $("body").attr("data-example-plugin", "loaded");
});
