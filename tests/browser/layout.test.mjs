// The common page layout in a real browser: menus and title, alerts, tabs, failing rows, a screenshot.
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

test("a page renders with its menus and title", async () => {
  const device = await startDevice();
  try {
    const page = await openPage(browser);
    await page.goto(`${device.url}/config/network/ethernet1`);
    assert.equal(await page.textContent("#config_page_title"), "Ethernet 1 Configuration");
    assert.deepEqual(await page.locator("div.nav").allTextContents(), ["Network", "Settings"]);
    assert.equal(await page.locator("ul.nav2 li a").count(), 15);
    assert.match(await page.getAttribute("#menu_Ethernet_1", "href"), /\/config\/network\/ethernet1$/);
    assert.equal(await page.locator("li.selected > #menu_Ethernet_1").count(), 1);
    await page.click("#menu_DNS_Server");
    await page.waitForURL(/dns_server$/);
    assert.equal(await page.textContent("#config_page_title"), "Custom DNS Servers");
    assert.deepEqual(page.problems, []);
  } finally {
    await device.stop();
  }
});

test("the reboot alert shows and the banner moves down", async () => {
  const device = await startDevice({ files: { "/tmp/panelkit_reboot_flag": "" } });
  try {
    const page = await openPage(browser);
    await page.goto(`${device.url}/config/`);
    const alert = page.locator("#alertsBox");
    await alert.waitFor({ state: "visible" });
    assert.match(await alert.textContent(), /Settings have been changed that require a Reboot/);
    await page.waitForFunction(() => parseInt(getComputedStyle(document.getElementById("banner")).marginTop, 10) > 10);
    const alertBox = await alert.boundingBox();
    const bannerBox = await page.locator("#banner").boundingBox();
    assert.ok(bannerBox.y >= alertBox.y + alertBox.height, "the banner sits below the alert");
    assert.deepEqual(page.problems, []);
  } finally {
    await device.stop();
  }
});

test("without a pending reboot no alert is shown and the banner stays on top", async () => {
  const device = await startDevice();
  try {
    const page = await openPage(browser);
    await page.goto(`${device.url}/config/`);
    assert.equal(await page.locator("#alertsBox").count(), 0);
    assert.equal((await page.locator("#banner").boundingBox()).y, 0);
  } finally {
    await device.stop();
  }
});

test("changing tabs clears the result box", async () => {
  const device = await startDevice();
  try {
    const page = await openPage(browser);
    await page.goto(`${device.url}/fixtures/tabs.html`);
    await page.locator("#tabcontainer").waitFor({ state: "visible" });
    const box = page.locator(".form_result_msg");
    assert.equal(await box.textContent(), "Success: The form values were saved.");
    await page.click("a[href='#tab_status']");
    await page.locator("#tab_status").waitFor({ state: "visible" });
    assert.equal(await box.textContent(), "");
    assert.equal(await box.isVisible(), false);
    assert.deepEqual(page.problems, []);
  } finally {
    await device.stop();
  }
});

test("a validation error marks the row", async () => {
  const device = await startDevice();
  try {
    const page = await openPage(browser);
    await page.goto(`${device.url}/fixtures/form.html`);
    const failing = page.locator("tr.cppcms_error_msg");
    assert.equal(await failing.count(), 2);
    assert.equal(await failing.nth(0).locator("span.cppcms_error_msg").textContent(),
      "Invalid length; minimum 1, maximum 64");
    assert.equal(await failing.nth(1).locator("span.cppcms_error_msg").textContent(), "Invalid IP address");
    const color = await failing.nth(1).locator("span.cppcms_error_msg").evaluate((el) => getComputedStyle(el).color);
    assert.equal(color, "rgb(180, 35, 24)");
    assert.equal(await page.locator("tr:not(.cppcms_error_msg) #cfg_fix_save").count(), 1);
    assert.equal(await page.textContent(".form_result_msg.failure"), "Invalid values: The form values were not saved.");
  } finally {
    await device.stop();
  }
});

test("a screenshot of a page is saved under the build folder", async () => {
  const device = await startDevice({ files: { "/tmp/panelkit_reboot_flag": "" } });
  try {
    const page = await openPage(browser);
    await page.setViewportSize({ width: 1200, height: 800 });
    await page.goto(`${device.url}/fixtures/form.html`);
    fs.mkdirSync(screenshotDir, { recursive: true });
    const file = path.join(screenshotDir, "layout-form.png");
    await page.screenshot({ path: file, fullPage: true });
    assert.ok(fs.statSync(file).size > 5000);
    await page.setViewportSize({ width: 390, height: 800 });
    await page.goto(`${device.url}/config/network/ethernet1`);
    await page.screenshot({ path: path.join(screenshotDir, "layout-phone.png"), fullPage: true });
  } finally {
    await device.stop();
  }
});
