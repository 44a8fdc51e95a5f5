// The NTP page in chromium on a simulated device: saving the servers, and the status tab of chronyd and of ntpd.
import assert from "node:assert/strict";
import fs from "node:fs";
import path from "node:path";
import { after, before, test } from "node:test";
import { launchBrowser, screenshotDir, withDevice } from "./harness.mjs";

let browser;

before(async () => {
  browser = await launchBrowser();
});

after(async () => {
  await browser.close();
});

// Replaced whole at once: the status poll may run the program at any moment.
function replaceProgram(file, script) {
  fs.writeFileSync(`${file}.new`, script, { mode: 0o755 });
  fs.renameSync(`${file}.new`, file);
}

const commandLog = (device) => fs.readFileSync(path.join(device.root, "var/log/sim-commands.log"), "utf8");

async function screenshot(page, name) {
  fs.mkdirSync(screenshotDir, { recursive: true });
  await page.screenshot({ path: path.join(screenshotDir, name), fullPage: true });
}

test("the NTP servers are saved with the daemon stopped around the writes", async () => {
  await withDevice(browser, async (device, page) => {
    await page.goto(`${device.url}/config/network/ntp`);
    assert.equal(await page.inputValue("#cfg_ntpd_server0"), "0.pool.ntp.org");
    assert.equal(await page.isChecked("#ntpd_enabled"), true);

    await page.fill("#cfg_ntpd_server0", "ntp.site.local");
    await page.fill("#cfg_ntpd_server3", "");
    await Promise.all([page.waitForNavigation(), page.click("#cfg_ntpd_save")]);

    assert.equal(await page.textContent(".form_result_msg"), "Success: The form values were saved.");
    assert.equal(await page.inputValue("#cfg_ntpd_server0"), "ntp.site.local");
    assert.equal(await page.inputValue("#cfg_ntpd_server3"), "");
    assert.equal(device.storeGet("system/ntpd/servers/0"), "ntp.site.local");
    assert.equal(device.storeGet("system/ntpd/servers/3"), "");
    assert.equal(device.storeGet("system/ntpd/enabled"), "yes");
    assert.equal(commandLog(device), "/etc/init.d/ntpd stop\n/etc/init.d/ntpd start\n");
    assert.equal(await page.locator("#alertsBox").isVisible(), false, "no reboot is asked for");
    await screenshot(page, "ntp-saved.png");
  });
});

test("chronyd's status tab shows tracking, sources and clients, and jumps the clock", async () => {
  await withDevice(browser, async (device, page) => {
    await page.goto(`${device.url}/config/network/ntp`);
    await page.click("a[href='#status_tab']");
    const status = page.locator("#ntpd_status");
    await status.locator("h3", { hasText: "Clients" }).waitFor();
    assert.deepEqual(await status.locator("h3").allTextContents(), ["State", "Tracking", "Sources", "Clients"]);
    assert.equal((await status.locator("pre").nth(0).textContent()), "Running");
    assert.match(await status.locator("pre").nth(1).textContent(), /^Reference ID\s+: C0356C6C/);
    assert.match(await status.locator("pre").nth(2).textContent(), /\^\* 192\.53\.103\.108/);
    const jump = status.locator("form[method='post'] #status_ntp_manual_sync");
    assert.equal(await jump.getAttribute("name"), "submit");
    assert.equal(await jump.inputValue(), "Jump system time");
    assert.equal(await status.locator(".status_note").textContent(),
      "(Synchronize system time immediately to a reachable source)");
    assert.ok(page.rpcMethods.every((method) => method === "ntpd_status"));
    await screenshot(page, "ntp-chronyd-status.png");

    await Promise.all([page.waitForNavigation(), page.click("#status_ntp_manual_sync")]);
    assert.equal(await page.locator("#status_tab").isVisible(), true, "the status tab is shown again");
    assert.equal(await page.locator(".form_result_msg").count(), 0);
    assert.equal(commandLog(device).split("\n").filter((line) => line === "/usr/bin/chronyc online").length, 1);
    await status.locator("h3", { hasText: "Tracking" }).waitFor();
  });
});

test("without chronyc the status tab shows ntpd's peers and its GPS synchronisation", async () => {
  await withDevice(browser, async (device, page) => {
    fs.rmSync(path.join(device.root, "usr/bin/chronyc"));
    fs.mkdirSync(path.join(device.root, "etc/sim"), { recursive: true });
    fs.writeFileSync(path.join(device.root, "etc/sim/ntp-gps"), "");
    await page.goto(`${device.url}/config/network/ntp`);
    await page.click("a[href='#status_tab']");
    const status = page.locator("#ntpd_status");
    await status.locator("h3", { hasText: "Raw Output" }).waitFor();
    assert.deepEqual(await status.locator("h3").allTextContents(),
      ["State", "Running", "GPS", "PPS", "Synchronised To", "Raw Output"]);
    assert.deepEqual(await status.locator("pre").allTextContents().then((texts) => texts.slice(0, 4)),
      ["Yes", "Synchronised", "Synchronised", "GPS with PPS"]);
    assert.match(await status.locator("pre").nth(4).textContent(), /\*127\.127\.28\.0\s+\.GPS\./);
    assert.equal(await page.locator("#status_ntp_manual_sync").count(), 0, "ntpd has no clock jump");
    await screenshot(page, "ntp-ntpd-status.png");
  });
});

test("a stopped chronyd shows only its state, without the clock jump", async () => {
  await withDevice(browser, async (device, page) => {
    fs.writeFileSync(path.join(device.root, "var/lib/sim/ntpd-stopped"), "");
    await page.goto(`${device.url}/config/network/ntp`);
    await page.click("a[href='#status_tab']");
    const status = page.locator("#ntpd_status");
    await status.locator("pre", { hasText: "Stopped" }).waitFor();
    assert.deepEqual(await status.locator("h3").allTextContents(), ["State"]);
    assert.deepEqual(await status.locator("pre").allTextContents(), ["Stopped"]);
    assert.equal(await page.locator("#status_ntp_manual_sync").count(), 0);
  });
});

test("ntpd's table follows its synchronisation, and its peers' texts stay text", async () => {
  await withDevice(browser, async (device, page) => {
    fs.rmSync(path.join(device.root, "usr/bin/chronyc"));
    const ntpq = path.join(device.root, "usr/bin/ntpq");
    replaceProgram(ntpq, "#!/bin/sh\nprintf '+127.127.28.0 .GPS. 0 l\\n*127.127.28.1 .PPS. 0 l\\n<b id=injected>x</b>\\n'\n");
    await page.goto(`${device.url}/config/network/ntp`);
    await page.click("a[href='#status_tab']");
    const status = page.locator("#ntpd_status");
    await status.locator("h3", { hasText: "Raw Output" }).waitFor();
    assert.deepEqual(await status.locator("pre").allTextContents().then((texts) => texts.slice(0, 4)),
      ["Yes", "Not synchronised", "Synchronised", "PPS"]);
    assert.match(await status.locator("pre").nth(4).textContent(), /<b id=injected>x<\/b>/);
    assert.equal(await page.locator("#injected").count(), 0, "no markup from the device");

    // Stopped, ntpq's complaint is all there is besides the state.
    replaceProgram(ntpq, "#!/bin/sh\necho 'ntpq: read: Connection refused' >&2\n");
    await status.locator("pre", { hasText: "Connection refused" }).waitFor();
    assert.deepEqual(await status.locator("h3").allTextContents(), ["State", "Running", "Raw Output"]);
    assert.deepEqual(await status.locator("pre").allTextContents(), ["No", "ntpq: read: Connection refused"]);
  });
});
