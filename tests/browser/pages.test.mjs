// The General, Ethernet and DNS pages in chromium on a simulated device: saving, and the status tabs.
import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import { launchBrowser, withDevice } from "./harness.mjs";

let browser;

before(async () => {
  browser = await launchBrowser();
});

after(async () => {
  await browser.close();
});

const addressRows = ["ipAddress", "netmask", "gateway"];

async function rowsVisible(page) {
  const visible = [];
  for (const name of addressRows) {
    visible.push(await page.locator(`table.form_table tr:has([name='${name}'])`).isVisible());
  }
  return visible;
}

test("the Ethernet page saved in DHCP mode hides the address rows and asks for a reboot", async () => {
  await withDevice(browser, async (device, page) => {
    await page.goto(`${device.url}/config/network/ethernet1`);
    assert.deepEqual(await rowsVisible(page), [true, true, true]);
    assert.equal(await page.locator("#alertsBox").isVisible(), false);

    await page.selectOption("select[name='addressMode']", "dhcp");
    assert.deepEqual(await rowsVisible(page), [false, false, false]);
    assert.equal(await page.locator("[name='ipAddress']").isDisabled(), true);
    await page.selectOption("select[name='speedsAvailable']", ["1", "3"]);
    await Promise.all([page.waitForNavigation(), page.click("#cfg_eth1_save")]);

    assert.equal(await page.textContent(".form_result_msg"), "Ethernet 1 settings updated, reboot to take effect");
    await page.locator("#alertsBox").waitFor({ state: "visible" });
    assert.deepEqual(await rowsVisible(page), [false, false, false]);
    assert.equal(device.storeGet("net/lan_addr_mode"), "dhcp");
    assert.equal(device.storeGet("net/lan_advertise_speed"), "10");
    assert.equal(device.storeGet("net/lan_ipaddr"), "192.168.1.1");

    await page.selectOption("select[name='addressMode']", "static");
    assert.deepEqual(await rowsVisible(page), [true, true, true]);
  });
});

test("the Ethernet status tab fills from ethernet1_status only once it is shown", async () => {
  await withDevice(browser, async (device, page) => {
    await page.goto(`${device.url}/config/network/ethernet1`);
    await page.waitForTimeout(2500);
    assert.deepEqual(page.rpcMethods, [], "no polling while the status tab is hidden");

    await page.click("a[href='#status_tab']");
    const status = page.locator("#ethernet1_status");
    await status.locator("h3", { hasText: "Ethernet1 Settings" }).waitFor();
    assert.deepEqual(await status.locator("h3").allTextContents(),
      ["Bridge Setup", "Bridge Interface", "Ethernet1 Interface", "Ethernet1 Settings"]);
    assert.match(await status.locator("pre").nth(2).textContent(), /^eth0\s+Link encap:Ethernet/);
    assert.match(await status.locator("pre").nth(3).textContent(), /Settings for eth0:/);
    assert.equal(await status.locator("img").count(), 0, "the spinner is replaced by the first reply");
    assert.ok(page.rpcMethods.every((method) => method === "ethernet1_status"));
    assert.match(await page.textContent("#ethernet1_network_status"), /excavator-7/);

    const before = page.rpcMethods.length;
    await page.waitForTimeout(2200);
    assert.ok(page.rpcMethods.length > before, "the tab keeps polling while visible");
  });
});

test("a failing status request shows the error with its status", async () => {
  await withDevice(browser, async (device, page) => {
    await page.route("**/async/rpc", (route) => route.fulfill({ status: 500, body: "broken" }));
    await page.goto(`${device.url}/config/network/ethernet1`);
    await page.click("a[href='#status_tab']");
    await page.locator("#ethernet1_status", { hasText: "Error retrieving status: " }).waitFor();
    assert.equal(await page.textContent("#ethernet1_status"),
      "Error retrieving status: Internal Server Error [500]");
    page.problems.length = 0; // chromium reports the refused request itself on the console
  });
});

test("the DNS page saves its fields and shows the resolver file", async () => {
  await withDevice(browser, async (device, page) => {
    await page.goto(`${device.url}/config/network/dns_server`);
    assert.equal(await page.inputValue("#cfg_eth1_dns0"), "8.8.8.8");
    await page.fill("#cfg_eth1_dns0", "9.9.9.9");
    await page.fill("#cfg_eth1_dns1", "");
    await page.fill("#cfg_eth1_dnssfx", "works.example");
    await page.check("input[name='isAppend']");
    await Promise.all([page.waitForNavigation(), page.click("#cfg_eth1_save")]);

    assert.equal(await page.textContent(".form_result_msg"), "DNS server settings updated, reboot to take effect");
    await page.locator("#alertsBox").waitFor({ state: "visible" });
    assert.equal(device.storeGet("net/lan_dns1"), "9.9.9.9");
    assert.equal(device.storeGet("net/lan_dns2"), "");
    assert.equal(device.storeGet("net/lan_dns_suffix"), "works.example");
    assert.equal(device.storeGet("net/lan_dns_is_append"), "yes");

    await page.goto(`${device.url}/config/network/dns_server`);
    assert.equal(await page.inputValue("#cfg_eth1_dns0"), "9.9.9.9");
    assert.equal(await page.isChecked("input[name='isAppend']"), true);
    await page.click("a[href='#status_tab']");
    await page.locator("#dns_server_status h3", { hasText: "DNS Settings" }).waitFor();
    assert.match(await page.textContent("#dns_server_status pre"), /nameserver 8\.8\.8\.8/);
  });
});

test("the General status tab shows date, uptime, temperature and processes", async () => {
  await withDevice(browser, async (device, page) => {
    await page.goto(`${device.url}/config/settings/general`);
    assert.equal(await page.inputValue("#cfg_grl_device_name"), "fieldrouter");
    assert.match(await page.textContent("#general_config"), /A123456789/);
    await page.click("a[href='#status_tab']");
    const status = page.locator("#general_dynamic_status");
    await status.locator("h3", { hasText: "Process Status" }).waitFor();
    assert.deepEqual(await status.locator("h3").allTextContents(),
      ["Date", "Uptime", "Board Temperature", "Top", "Process Status"]);
    assert.equal(await status.locator("pre").nth(2).textContent(), "45.7 degrees Celsius");
    assert.deepEqual(await page.locator("#general_status h3").allTextContents(), ["Uname", "Version Info"]);
    assert.deepEqual([...new Set(page.rpcMethods)], ["general_dynamic_status"]);
  });
});

test("the General page saves the device name", async () => {
  await withDevice(browser, async (device, page) => {
    await page.goto(`${device.url}/config/settings/general`);
    await page.fill("#cfg_grl_device_name", "excavator-router");
    await Promise.all([page.waitForNavigation(), page.click("#cfg_grl_save")]);
    assert.equal(await page.textContent(".form_result_msg"), "Success: The form values were saved.");
    assert.equal(device.storeGet("net/hostname"), "excavator-router");
    assert.equal(await page.locator("#alertsBox").isVisible(), false);
  });
});
