// Command output of any width stays inside its own box: the page never grows wider than the window.
import assert from "node:assert/strict";
import fs from "node:fs";
import path from "node:path";
import { after, before, test } from "node:test";
import { launchBrowser, openPage, screenshotDir, startDevice } from "./harness.mjs";

let browser;

before(async () => {
  browser = await launchBrowser();
});

after(async () => {
  await browser.close();
});

const longLine = "x".repeat(5000);
// Status commands keep the first 4096 bytes of their output; a thousand characters of the line are surely there.
const longText = /x{1000}/;

// A simulated device whose resolver, version and process list each hold one 5,000-character line.
async function withWideDevice(body) {
  const device = await startDevice({
    simulated: true,
    files: {
      "/etc/resolv.conf": `nameserver 8.8.8.8\nsearch ${longLine}\n`,
      "/etc/version": `ULM3 ${longLine}\n`,
      // Ahead of the stand-in in /bin on the device's PATH.
      "/usr/bin/ps": `#!/bin/sh\necho 'UID PID PPID C STIME TTY TIME CMD'\necho 'root 1 0 0 08:00 ? 00:00:01 /sbin/init ${longLine}'\n`,
    },
  });
  fs.chmodSync(path.join(device.root, "usr/bin/ps"), 0o755);
  try {
    const page = await openPage(browser);
    await page.setViewportSize({ width: 1280, height: 800 });
    await body(device, page);
    assert.deepEqual(page.problems, []);
  } finally {
    await device.stop();
  }
}

function widths(page) {
  return page.evaluate(() => ({
    document: document.documentElement.scrollWidth,
    window: window.innerWidth,
    nav: document.getElementById("nav").getBoundingClientRect().width,
  }));
}

// Every pre in the target holding the long line scrolls inside its own box.
async function scrollsInside(page, selector) {
  return page.locator(`${selector} pre`).evaluateAll((blocks, line) =>
    blocks.filter((pre) => pre.textContent.includes(line.slice(0, 1000)))
      .map((pre) => ({ scrolls: pre.scrollWidth > pre.clientWidth, inWindow: pre.getBoundingClientRect().right <= window.innerWidth })),
  longLine);
}

async function screenshot(page, name) {
  fs.mkdirSync(screenshotDir, { recursive: true });
  const file = path.join(screenshotDir, name);
  await page.screenshot({ path: file, fullPage: true });
  assert.ok(fs.statSync(file).size > 5000);
}

test("a 5,000-character resolver line scrolls inside the DNS status box", async () => {
  await withWideDevice(async (device, page) => {
    await page.goto(`${device.url}/config/network/dns_server`);
    const before = await widths(page);
    await page.click("a[href='#status_tab']");
    await page.locator("#dns_server_status pre", { hasText: longText }).waitFor();

    const after = await widths(page);
    assert.ok(after.document <= after.window, `the page is ${after.document} px wide in a ${after.window} px window`);
    assert.equal(after.nav, before.nav, "the menu keeps its width");
    assert.ok(after.nav >= 200, `the menu is ${after.nav} px wide`);
    assert.deepEqual(await scrollsInside(page, "#dns_server_status"), [{ scrolls: true, inWindow: true }]);
    await screenshot(page, "overflow-dns-status.png");
  });
});

test("5,000-character version and process lines scroll inside the General status boxes", async () => {
  await withWideDevice(async (device, page) => {
    await page.goto(`${device.url}/config/settings/general`);
    const before = await widths(page);
    await page.click("a[href='#status_tab']");
    await page.locator("#general_dynamic_status pre", { hasText: longText }).waitFor();

    const after = await widths(page);
    assert.ok(after.document <= after.window, `the page is ${after.document} px wide in a ${after.window} px window`);
    assert.equal(after.nav, before.nav, "the menu keeps its width");
    assert.ok(after.nav >= 200, `the menu is ${after.nav} px wide`);
    assert.deepEqual(await scrollsInside(page, "#general_status"), [{ scrolls: true, inWindow: true }]);
    assert.deepEqual(await scrollsInside(page, "#general_dynamic_status"), [{ scrolls: true, inWindow: true }]);
    await screenshot(page, "overflow-general-status.png");
  });
});
