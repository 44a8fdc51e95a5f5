// The example plugin in a real browser: its menu, page, style sheet, script and branding, and a save.
import assert from "node:assert/strict";
import fs from "node:fs";
import path from "node:path";
import { after, before, test } from "node:test";
import { launchBrowser, openPage, screenshotDir, startDevice } from "./harness.mjs";

let browser;
let device;

before(async () => {
  browser = await launchBrowser();
  device = await startDevice({ examplePlugin: true });
});

after(async () => {
  await device.stop();
  await browser.close();
});

test("the plugin's page shows its style sheet, script and branding", async () => {
  const page = await openPage(browser);
  await page.goto(`${device.url}/config/example/`);
  assert.equal(await page.title(), "Field Router (example branding)");
  assert.equal(await page.textContent("#banner_middle h1"), "Field Router with Example Plugin");
  assert.equal(await page.textContent(".left_footer"), "Example plugin branding");
  assert.equal(await page.textContent("#config_page_title"), "Example Site");
  const border = await page.locator(".example_intro").evaluate((el) => getComputedStyle(el).borderLeftColor);
  assert.equal(border, "rgb(217, 119, 6)");
  await page.waitForSelector("body[data-example-plugin='loaded']");
  assert.deepEqual((await page.locator("div.nav").allTextContents()).slice(0, 2), ["Example", "Network"]);
  assert.equal(await page.locator("#menu_Example_Help").count(), 1);
  assert.deepEqual(page.problems, []);
  await Promise.all([page.waitForNavigation(), page.click("#menu_Example_Help")]);
  assert.equal(await page.textContent("#config_page_title"), "Example Help");
  assert.equal(await page.locator("li.selected #menu_Example_Help").count(), 1);
  assert.equal(await page.locator("li.selected #menu_Example_Site").count(), 0);
  await page.goto(`${device.url}/config/example/`);
  fs.mkdirSync(screenshotDir, { recursive: true });
  await page.screenshot({ path: path.join(screenshotDir, "example-plugin.png"), fullPage: true });
});

test("the plugin's page saves its key", async () => {
  const page = await openPage(browser);
  await page.goto(`${device.url}/config/example/`);
  await page.fill("#cfg_example_site", "North Pit");
  await Promise.all([page.waitForNavigation(), page.click("#cfg_example_save")]);
  assert.equal(await page.textContent(".form_result_msg"), "Success: The form values were saved.");
  assert.equal(await page.inputValue("#cfg_example_site"), "North Pit");
  const reply = await page.evaluate(async () => {
    const response = await fetch("/async/example", {
      method: "POST",
      headers: { "Content-Type": "application/json" },
      body: JSON.stringify({ method: "example_status", params: [], id: 7 }),
    });
    return response.json();
  });
  assert.deepEqual(reply, { id: 7, error: null, result: { plugin: "example", site: "North Pit" } });
});

test("an empty site name marks the row and keeps the stored one", async () => {
  const page = await openPage(browser);
  await page.goto(`${device.url}/config/example/`);
  await page.fill("#cfg_example_site", "");
  await Promise.all([page.waitForNavigation(), page.click("#cfg_example_save")]);
  assert.equal(await page.locator("tr.cppcms_error_msg #cfg_example_site").count(), 1);
  assert.equal(await page.textContent(".form_result_msg.failure"), "Invalid values: The form values were not saved.");
  await page.goto(`${device.url}/config/example/`);
  assert.equal(await page.inputValue("#cfg_example_site"), "North Pit");
});

test("removing the plugin and calling reload takes its menus, page, media and branding away", async () => {
  const page = await openPage(browser);
  await page.goto(`${device.url}/config/network/dns_server`);
  assert.equal(await page.locator("div.nav", { hasText: "Example" }).count(), 1);
  assert.equal(await page.locator("link[href*='/example/head/']").count(), 1);

  fs.rmSync(path.join(device.root, "mnt", "apps", "example"), { recursive: true, force: true });
  const reply = await page.evaluate(async () => {
    const response = await fetch("/async/rpc", {
      method: "POST",
      headers: { "Content-Type": "application/json" },
      body: JSON.stringify({ method: "reload", params: [], id: 1 }),
    });
    return response.status;
  });
  assert.equal(reply, 200);
  const deadline = Date.now() + 15000;
  while (!device.log().includes("** forced reload **") && Date.now() < deadline)
    await new Promise((resolve) => setTimeout(resolve, 100));
  let response = null;
  while (Date.now() < deadline) {
    response = await page.goto(`${device.url}/config/network/dns_server`).catch(() => null);
    if (response && response.status() === 200) break;
    await new Promise((resolve) => setTimeout(resolve, 100));
  }
  assert.equal(response?.status(), 200, device.log());
  assert.deepEqual((await page.locator("div.nav").allTextContents()).slice(0, 2), ["Network", "Settings"]);
  assert.equal(await page.locator("#menu_Example_Help").count(), 0);
  assert.equal(await page.locator("link[href*='/example/head/']").count(), 0);
  assert.notEqual(await page.title(), "Field Router (example branding)");
  assert.equal((await page.goto(`${device.url}/config/example/`)).status(), 404);
});
