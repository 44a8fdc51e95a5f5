// A firmware upgrade in chromium on a simulated device: the upload, the tool's progress, and both endings.
import assert from "node:assert/strict";
import crypto from "node:crypto";
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

const magic = Buffer.from([0xd0, 0x0d, 0xfe, 0xed]);

function image(marker, size) {
  const bytes = Buffer.alloc(size, 0x69);
  magic.copy(bytes, 0);
  Buffer.from(marker).copy(bytes, 4);
  return bytes;
}

// The texts the progress elements take, as they change.
async function recordProgress(page) {
  const seen = { tp: [], bytes: [], widths: [] };
  await page.exposeFunction("panelkitTestRecord", (what, value) => {
    const list = seen[what];
    if (list[list.length - 1] !== value) {
      list.push(value);
    }
  });
  const watch = () => {
    const observe = () => {
      const record = () => {
        window.panelkitTestRecord("tp", document.getElementById("tp").textContent);
        window.panelkitTestRecord("bytes", document.getElementById("bytes").textContent);
        window.panelkitTestRecord("widths", document.getElementById("progressbar").style.width);
      };
      new MutationObserver(record).observe(document.querySelector(".progress_block"),
        { subtree: true, childList: true, characterData: true, attributes: true });
    };
    if (document.readyState === "loading") {
      document.addEventListener("DOMContentLoaded", observe);
    } else {
      observe();
    }
  };
  await page.evaluate(watch);
  return { seen, watch };
}

async function upload(page, device, name, bytes) {
  await page.goto(`${device.url}/config/settings/firmware`);
  assert.match(await page.textContent("#config_tab pre"), /rootfs_a: 2\.4\.1/);
  await page.setInputFiles("#cfg_frw_file", { name, mimeType: "application/octet-stream", buffer: bytes });
  const progress = await recordProgress(page);
  await page.click("#cfg_frw_save");
  return progress;
}

test("a good image is uploaded, flashed with its progress shown, and the device reboots into it", async () => {
  const device = await startDevice({ simulated: true, env: { PANELKIT_SIM_FWTOOL_SECONDS: "8" } });
  try {
    const page = await openPage(browser);
    const bytes = image("good", 3 * 1024 * 1024 + 17);
    const { seen, watch } = await upload(page, device, "ulm3-2.5.0.bin", bytes);

    // The reply replaces the page: the progress page names the image by its digest.
    const sha256 = crypto.createHash("sha256").update(bytes).digest("hex");
    await page.locator("#fw_sha256").filter({ hasText: sha256 }).waitFor({ timeout: 20000 });
    await page.evaluate(watch);
    assert.ok(seen.bytes.some((text) => /^\d+ \/ \d+$/.test(text)), `upload bytes shown: ${seen.bytes}`);
    assert.ok(seen.tp.includes("Copying file: please wait..."), `states: ${seen.tp}`);
    await page.locator("#tp").filter({ hasText: "flash" }).waitFor({ timeout: 30000 });
    fs.mkdirSync(screenshotDir, { recursive: true });
    await page.screenshot({ path: path.join(screenshotDir, "firmware-progress.png"), fullPage: true });

    await page.waitForURL(/\/config\/settings\/reboot\?type=finishedUpgrade$/, { timeout: 30000 });
    const widths = seen.widths.map((width) => parseInt(width, 10)).filter((width) => width > 1);
    assert.ok(widths.length > 1, `the bar moved: ${seen.widths}`);
    assert.ok(seen.tp.includes("flash") && seen.tp.includes("finishing"), `tool states: ${seen.tp}`);
    assert.equal(await page.textContent(".form_result_msg"), "Firmware upgraded successfully, reboot to run new firmware");
    assert.match(fs.readFileSync(path.join(device.root, "var/log/sim-commands.log"), "utf8"),
      /\/usr\/bin\/fwtool environment FWBOOT=1\n/);

    await page.click("#cfg_rbt_reboot");
    await page.locator("#wait_reboot").waitFor();
    await page.locator(".form_result_msg").filter({ hasText: "Device is rebooting..." }).waitFor();
    await page.waitForURL(`${device.url}/config/`, { timeout: 90000 });
    assert.match(fs.readFileSync(path.join(device.root, "var/log/sim-reboot.log"), "utf8"), /restarted/);
    assert.deepEqual(page.problems.filter((problem) => !/Failed to load resource/.test(problem)), []);
  } finally {
    await device.stop();
  }
});

test("an image the tool rejects ends on the firmware page with the failure", async () => {
  const device = await startDevice({ simulated: true, env: { PANELKIT_SIM_FWTOOL_SECONDS: "2" } });
  try {
    const page = await openPage(browser);
    await upload(page, device, "broken.itb", image("FAIL", 256 * 1024));
    await page.waitForURL(/\/config\/settings\/firmware\?type=failedUpgrade$/, { timeout: 30000 });
    assert.equal(await page.textContent(".form_result_msg"), "Firmware upgrade failed");
    assert.equal(await page.locator("#firmware_form").isVisible(), true);
    assert.deepEqual(page.problems.filter((problem) => !/Failed to load resource/.test(problem)), []);
  } finally {
    await device.stop();
  }
});

test("a file the page refuses comes back with the form and nothing starts", async () => {
  const device = await startDevice({ simulated: true });
  try {
    const page = await openPage(browser);
    await upload(page, device, "image.img", image("good", 4096));
    await page.locator(".form_result_msg").filter({ hasText: "Invalid values" }).waitFor();
    assert.equal(await page.locator("#firmware_form").isVisible(), true);
    assert.equal(fs.readdirSync(path.join(device.root, "tmp")).filter((name) => name.startsWith("firmware")).length, 0);
    fs.mkdirSync(screenshotDir, { recursive: true });
    await page.screenshot({ path: path.join(screenshotDir, "firmware-refused.png"), fullPage: true });
    assert.deepEqual(page.problems, []);
  } finally {
    await device.stop();
  }
});
