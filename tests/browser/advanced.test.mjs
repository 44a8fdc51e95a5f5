// The Advanced page in chromium on a simulated device: erasing, the web password, the configuration listing
// downloaded and restored, and the system log tab.
import assert from "node:assert/strict";
import crypto from "node:crypto";
import fs from "node:fs";
import os from "node:os";
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

function commandLog(device) {
  return fs.readFileSync(path.join(device.root, "var/log/sim-commands.log"), "utf8");
}

test("erasing the log partition asks for a reboot", async () => {
  await withDevice(browser, async (device, page) => {
    await page.goto(`${device.url}/config/settings/advanced`);
    await page.click("a[href='#advanced_configuration_tab']");
    assert.match(await page.textContent("label:has(#cfg_adv_erase_which_0)"), /^ Log Partition \(\d+\.\dGB free, \d+% used\)$/);
    await page.check("#cfg_adv_erase_which_0");
    // Said no to first: nothing is erased.
    const questions = [];
    page.once("dialog", (dialog) => { questions.push(dialog.message()); dialog.dismiss(); });
    await page.click("#cfg_adv_erase_partition");
    assert.deepEqual(questions, ["Erase everything on the chosen partition? It cannot be brought back."]);
    assert.doesNotMatch(commandLog(device), /erase-partition/);
    page.once("dialog", (dialog) => dialog.accept());
    await Promise.all([page.waitForNavigation(), page.click("#cfg_adv_erase_partition")]);

    assert.equal(await page.textContent(".form_result_msg"), "Success: The log partition was erased. Reboot now.");
    await page.locator("#alertsBox").waitFor({ state: "visible" });
    assert.equal(await page.locator("#advanced_configuration").isVisible(), true, "the posted form's tab is open");
    assert.match(commandLog(device), /^\/etc\/erase\/erase-partition log$/m);
  });
});

test("a changed web password is stored as its digest", async () => {
  await withDevice(browser, async (device, page) => {
    await page.goto(`${device.url}/config/settings/advanced`);
    await page.click("a[href='#advanced_password_tab']");
    await page.fill("#cfg_adv_passwd_web", "n3w 'pass\" $(word)");
    await page.fill("#cfg_adv_passwd_cnfm_web", "n3w 'pass\" $(word)");
    await Promise.all([page.waitForNavigation(), page.click("#cfg_adv_passwd_save_web")]);

    assert.equal(await page.textContent(".form_result_msg"), "Success: The form values were saved.");
    const digest = crypto.createHash("md5").update("admin:Halvor Configuration Tool:n3w 'pass\" $(word)").digest("hex");
    assert.equal(device.storeGet("webman/digest/admin"), digest);
    assert.equal(await page.inputValue("#cfg_adv_passwd_web"), "", "a password is never sent back");
    assert.match(commandLog(device), /^\/usr\/sbin\/lighttpd_set_passwd\.sh\n\/etc\/nat_setup\.sh web_advanced\n$/);
  });
});

test("a downloaded configuration listing restores with one key changed", async () => {
  await withDevice(browser, async (device, page) => {
    await page.goto(`${device.url}/config/settings/advanced`);
    await page.click("a[href='#advanced_configuration_tab']");
    const [download] = await Promise.all([page.waitForEvent("download"), page.click("#cfg_adv_backup")]);
    assert.equal(download.suggestedFilename(), "Config_A123456789.txt");
    const listing = fs.readFileSync(await download.path(), "utf8");
    assert.match(listing, /^"net\/hostname","fieldrouter", s$/m);

    const work = fs.mkdtempSync(path.join(os.tmpdir(), "panelkit-restore-"));
    try {
      const edited = path.join(work, "Config_A123456789.txt");
      fs.writeFileSync(edited, listing.replace('"net/hostname","fieldrouter", s', '"net/hostname","crane-\\"12\\"", s'));
      await page.setInputFiles("#cfg_adv_restore_file", edited);
      page.once("dialog", (dialog) => dialog.accept());
      await Promise.all([page.waitForNavigation(), page.click("#cfg_adv_restore")]);
    } finally {
      fs.rmSync(work, { recursive: true, force: true });
    }

    assert.equal(await page.textContent(".form_result_msg"), "Configuration restored: 1 keys changed. Reboot to take effect");
    assert.equal(device.storeGet("net/hostname"), 'crane-\\"12\\"');
    await page.locator("#alertsBox").waitFor({ state: "visible" });
    fs.mkdirSync(screenshotDir, { recursive: true });
    await page.screenshot({ path: path.join(screenshotDir, "advanced-restored.png"), fullPage: true });
  });
});

test("the system log tab polls tail_syslog only once it is shown", async () => {
  await withDevice(browser, async (device, page) => {
    await page.goto(`${device.url}/config/settings/advanced`);
    await page.waitForTimeout(2500);
    assert.deepEqual(page.rpcMethods, [], "no polling while the tab is hidden");

    await page.click("a[href='#advanced_syslog_tab']");
    const recent = page.locator("#advanced_syslog_dynamic pre");
    await recent.waitFor();
    assert.match(await recent.textContent(), /vigild\[301\]: all services running$/);
    assert.equal(await page.locator("#advanced_syslog_dynamic h3").count(), 0);
    assert.deepEqual([...new Set(page.rpcMethods)], ["tail_syslog"]);
    fs.mkdirSync(screenshotDir, { recursive: true });
    await page.screenshot({ path: path.join(screenshotDir, "advanced-syslog.png"), fullPage: true });

    await page.route("**/async/rpc", (route) => route.fulfill({ status: 500, body: "broken" }));
    await page.locator("#advanced_syslog_dynamic", { hasText: "Error retrieving log: " }).waitFor();
    assert.equal(await page.textContent("#advanced_syslog_dynamic"), "Error retrieving log: Internal Server Error [500]");
    page.problems.length = 0; // chromium reports the refused request itself on the console
  });
});
