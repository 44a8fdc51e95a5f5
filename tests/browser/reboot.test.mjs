// The Reboot and About pages in chromium on a simulated device: the waiting page follows the device's restart
// and returns to it by itself; the licence list opens a licence's text.
import assert from "node:assert/strict";
import fs from "node:fs";
import path from "node:path";
import { after, before, test } from "node:test";
import { launchBrowser, openPage, screenshotDir, startDevice, waitUntil } from "./harness.mjs";

let browser;

before(async () => {
  browser = await launchBrowser();
});

after(async () => {
  await browser.close();
});

async function screenshot(page, name) {
  fs.mkdirSync(screenshotDir, { recursive: true });
  const file = path.join(screenshotDir, name);
  await page.screenshot({ path: file, fullPage: true });
  assert.ok(fs.statSync(file).size > 5000);
}

const read = (file) => (fs.existsSync(file) ? fs.readFileSync(file, "utf8") : "");

test("rebooting shows the countdown, and the page returns to the device once it has restarted", async () => {
  const device = await startDevice({ simulated: true });
  const firstPid = Number(read(path.join(device.root, "var/run/panelkit.pid")));
  const rebootLog = path.join(device.root, "var/log/sim-reboot.log");
  try {
    const page = await openPage(browser);
    await page.goto(`${device.url}/config/settings/reboot`);
    assert.equal(await page.textContent("#config_page_title"), "Reboot");
    await Promise.all([page.waitForNavigation(), page.click("#cfg_rbt_reboot")]);

    const countdown = page.locator("#wait_reboot .form_result_msg");
    await countdown.filter({ hasText: /^Device is rebooting\.\.\. \d+$/ }).waitFor();
    const first = Number((await countdown.textContent()).match(/\d+$/)[0]);
    assert.ok(first <= 99, `counting down from 100, showed ${first}`);
    await page.waitForFunction((shown) => {
      const box = document.querySelector("#wait_reboot .form_result_msg");
      const left = Number((box.textContent.match(/(\d+)$/) || [])[1]);
      return left < shown;
    }, first);
    await page.locator("#content").waitFor({ state: "hidden" });
    assert.equal(await page.textContent("body > .form_result_msg"), "Please wait..rebooting");
    await screenshot(page, "reboot-waiting.png");

    await waitUntil(() => read(rebootLog).includes("restarted"), 20000, "the simulated restart");
    // From its 20th second the page probes the device; it loads the device's pages once they answer again.
    await page.waitForURL(`${device.url}/config/`, { timeout: 45000 });
    assert.equal(await page.textContent("#config_page_title"), "General Device Configuration");
    assert.notEqual(Number(read(path.join(device.root, "var/run/panelkit.pid"))), firstPid);
    assert.equal(read(path.join(device.root, "var/log/sim-commands.log")).split("\n").filter((line) => line === "/sbin/reboot -d 5").length, 1);
    await screenshot(page, "reboot-returned.png");
    assert.deepEqual(page.problems, []);
  } finally {
    await device.stop();
  }
});

test("the About page lists the licences and opens one where it is listed", async () => {
  const device = await startDevice({ simulated: true });
  try {
    const page = await openPage(browser);
    await page.goto(`${device.url}/config/settings/general`);
    await Promise.all([page.waitForNavigation(), page.click("#nav a:text-is('About')")]);
    assert.equal(await page.textContent("#config_page_title"), "Open Source Software  Notices");
    assert.deepEqual(await page.locator("table.oss_notices tr").evaluateAll((rows) => rows.map((row) => row.id)),
      ["libfieldbus-1.2", "panelkit-demo", "sitelink-0.9"]);
    assert.deepEqual(await page.locator("tr[id='libfieldbus-1.2'] a.ossnav").allTextContents(), ["COPYING", "exceptions", "NOTICE"]);
    assert.equal(await page.locator("pre").count(), 0);

    await Promise.all([page.waitForNavigation(), page.click("tr[id='libfieldbus-1.2'] a.ossnav:text-is('NOTICE')")]);
    assert.equal(new URL(page.url()).pathname, "/config/settings/about/libfieldbus-1.2/NOTICE");
    assert.equal(new URL(page.url()).hash, "#libfieldbus-1.2");
    const text = page.locator("tr[id='libfieldbus-1.2'] li:has(a:text-is('NOTICE')) pre");
    assert.match(await text.textContent(), /^libfieldbus notices\n/);
    assert.equal(await text.isVisible(), true);
    assert.equal(await page.locator("pre").count(), 1);
    await screenshot(page, "about-licence.png");
    assert.deepEqual(page.problems, []);
  } finally {
    await device.stop();
  }
});
