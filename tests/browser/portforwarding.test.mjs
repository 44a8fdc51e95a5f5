// The Port Forwarding page in chromium on a simulated device: adding, editing in place, saving and deleting rules,
// a preset's port refused, the port range checked before posting, and the firewall status tab.
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

const kPage = "/config/network/port_forwarding";
const kApplied = "/etc/nat_setup.sh web_forwarding\n";

function commandLog(device) {
  const file = path.join(device.root, "var/log/sim-commands.log");
  return fs.existsSync(file) ? fs.readFileSync(file, "utf8") : "";
}

async function fillAddRow(page, protocol, source, ip, destination) {
  await page.selectOption("#cfg_pfwadd_proto", protocol);
  await page.fill("#cfg_pfwadd_src_port", source);
  await page.fill("#cfg_pfwadd_dest_ip", ip);
  await page.fill("#cfg_pfwadd_dest_port", destination);
}

test("a rule is added, edited in place, saved and deleted", async () => {
  await withDevice(browser, async (device, page) => {
    await page.goto(`${device.url}${kPage}`);
    await fillAddRow(page, "tcp", "22", "192.168.1.22", "2222");
    await Promise.all([page.waitForNavigation(), page.click("#cfg_pfwadd_add")]);
    assert.equal(await page.textContent(".form_result_msg"), "Success: The form values were saved.");
    assert.equal(device.storeGet("net/portfwd/tcp/00022/d_ip"), "192.168.1.22");
    assert.equal(device.storeGet("net/portfwd/tcp/00022/d_port"), "2222");
    assert.equal(commandLog(device), kApplied);
    // TCP 22 comes first among the user rules.
    assert.match(await page.textContent("#row_0"), /TCP22:192\.168\.1\.222222/);

    // Edit turns the row into its edit row where it stands, without a request.
    const requests = [];
    page.on("request", (request) => requests.push(request.url()));
    await page.click("#row_0 input[name='edit']");
    const row = page.locator("#row_0");
    assert.equal(await row.locator("#cfg_pfw_dest_ip").inputValue(), "192.168.1.22");
    // Cancel puts the read-only row back, still without a request.
    await row.locator("#cfg_pfw_cancel").click();
    assert.equal(await row.locator("#cfg_pfw_dest_ip").count(), 0);
    assert.match(await row.textContent(), /192\.168\.1\.22/);
    await page.click("#row_0 input[name='edit']");
    assert.equal(await page.locator("tr.forwarding_form_row").nth(4).getAttribute("id"), "row_0");
    assert.deepEqual(requests, []);
    await row.locator("#cfg_pfw_dest_ip").fill("192.168.1.23");
    await row.locator("#cfg_pfw_dest_port").fill("2323");
    fs.mkdirSync(screenshotDir, { recursive: true });
    await page.screenshot({ path: path.join(screenshotDir, "portforwarding-edit.png"), fullPage: true });
    await Promise.all([page.waitForNavigation(), row.locator("#cfg_pfw_save").click()]);
    assert.equal(await page.textContent(".form_result_msg"), "Success: The form values were saved.");
    assert.equal(device.storeGet("net/portfwd/tcp/00022/d_ip"), "192.168.1.23");
    assert.equal(device.storeGet("net/portfwd/tcp/00022/d_port"), "2323");
    assert.equal(await page.locator("#cfg_pfw_dest_ip").count(), 0);

    page.once("dialog", (dialog) => dialog.accept());
    await Promise.all([page.waitForNavigation(), page.click("#row_0 input[name='delete']")]);
    assert.throws(() => device.storeGet("net/portfwd/tcp/00022/d_ip"), /no parameter/);
    assert.doesNotMatch(await page.textContent("#forwarding_form"), /192\.168\.1\.23/);
    assert.equal(commandLog(device), kApplied + kApplied + kApplied);
  });
});

test("a preset rule's port is refused with its message", async () => {
  await withDevice(browser, async (device, page) => {
    await page.goto(`${device.url}${kPage}`);
    await fillAddRow(page, "tcp", "8002", "192.168.1.50", "8002");
    await Promise.all([page.waitForNavigation(), page.click("#cfg_pfwadd_add")]);
    assert.equal(await page.textContent(".form_result_msg"),
      "Port forward rule not added. Preset rule exists with same protocol and source port.");
    assert.equal(await page.inputValue("#cfg_pfwadd_dest_ip"), "192.168.1.50");
    assert.equal(commandLog(device), "");
  });
});

test("a port outside 1 to 65535 is marked before anything is posted", async () => {
  await withDevice(browser, async (device, page) => {
    await page.goto(`${device.url}${kPage}`);
    await fillAddRow(page, "udp", "70000", "192.168.1.50", "53");
    const posts = [];
    page.on("request", (request) => request.method() === "POST" && posts.push(request.url()));
    await page.click("#cfg_pfwadd_add");
    const error = page.locator("#row_add span.cppcms_error_msg");
    await error.waitFor();
    assert.equal(await error.textContent(), "Invalid range; minimum 1, maximum 65535");
    assert.equal(await page.locator("#cfg_pfwadd_src_port.cppcms_error_msg").count(), 1);
    assert.deepEqual(posts, []);

    // The edit row is checked the same way.
    await page.click("#row_0 input[name='edit']");
    await page.fill("#cfg_pfw_dest_port", "0");
    await page.click("#cfg_pfw_save");
    await page.locator("#row_0 span.cppcms_error_msg").waitFor();
    assert.deepEqual(posts, []);
    assert.equal(device.storeGet("net/portfwd/tcp/00080/d_port"), "80");
  });
});

test("the status tab shows the firewall tables through the shared status script", async () => {
  await withDevice(browser, async (device, page) => {
    await page.goto(`${device.url}${kPage}`);
    await page.click("a[href='#status_tab']");
    const status = page.locator("#port_forwarding_status");
    await status.locator("h3", { hasText: "NAT" }).waitFor();
    assert.deepEqual(await status.locator("h3").allTextContents(), ["Filtering", "NAT"]);
    assert.match(await status.locator("pre").nth(1).textContent(), /DNAT/);
    assert.ok(page.rpcMethods.every((method) => method === "port_forwarding_status"));
    fs.mkdirSync(screenshotDir, { recursive: true });
    await page.screenshot({ path: path.join(screenshotDir, "portforwarding-status.png"), fullPage: true });
  });
});
