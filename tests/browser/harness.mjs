// Browser test harness: a simulated device served by the real panelkit on a loopback port of the kernel's choice,
// and Debian's chromium driven headless by playwright-core.
import assert from "node:assert/strict";
import { spawn, execFileSync } from "node:child_process";
import fs from "node:fs";
import os from "node:os";
import path from "node:path";

const repo = path.resolve(import.meta.dirname, "../..");
// The harness brings what it needs: the browser from Debian, the drivers from npm.
if (!fs.existsSync(process.env.CHROMIUM || "/usr/bin/chromium")) {
  execFileSync(path.join(repo, "scripts", "install-deps"), { stdio: "inherit" });
}
if (!fs.existsSync(path.join(repo, "node_modules", "playwright-core"))) {
  execFileSync("npm", ["ci", "--no-audit", "--no-fund"], { cwd: repo, stdio: "inherit" });
}
const { chromium } = await import("playwright-core");

const buildDir = process.env.PANELKIT_BUILD_DIR || path.resolve(import.meta.dirname, "../../build");
const binary = process.env.PANELKIT_BINARY || path.join(buildDir, "panelkit");

export const screenshotDir = path.join(buildDir, "screenshots");

// panelkit binds a port the kernel chooses and announces it in its log; waits for that line.
async function waitForAnnouncedPort(logFile, child, timeoutMs) {
  const deadline = Date.now() + timeoutMs;
  while (Date.now() < deadline) {
    const announced = /listening on http:\/\/[^\s]*:(\d+)\s/.exec(fs.readFileSync(logFile, "utf8"));
    if (announced) {
      return Number(announced[1]);
    }
    if (child.exitCode !== null) {
      throw new Error(`panelkit exited with ${child.exitCode}: ${fs.readFileSync(logFile, "utf8")}`);
    }
    await new Promise((resolve) => setTimeout(resolve, 20));
  }
  throw new Error("panelkit did not announce its port");
}

// Starts panelkit against a fresh device root; files maps device paths to contents written first.
// The media tree is a copy of the build's, with the rendered layout fixtures in "/fixtures".
// With examplePlugin, the example plugin is installed on a volume of the device's MOUNT_DIR.
// With simulated, the root is a whole simulated device: seeded store and stand-ins for its programs.
// env adds variables to panelkit's environment.
export async function startDevice({ files = {}, config = {}, examplePlugin = false, simulated = false, env: extraEnv = {} } = {}) {
  const work = fs.mkdtempSync(path.join(os.tmpdir(), "panelkit-browser-"));
  const root = path.join(work, "device");
  if (simulated) {
    execFileSync(path.join(repo, "sim", "init-device"), [root], { env: { ...process.env, PANELKIT_BUILD_DIR: buildDir } });
  }
  fs.mkdirSync(path.join(root, "tmp"), { recursive: true });
  for (const [devicePath, content] of Object.entries(files)) {
    const target = path.join(root, devicePath);
    fs.mkdirSync(path.dirname(target), { recursive: true });
    fs.writeFileSync(target, content);
  }
  const media = path.join(work, "media");
  fs.cpSync(path.join(buildDir, "media"), media, { recursive: true });
  fs.mkdirSync(path.join(media, "fixtures"));
  execFileSync(process.env.PANELKIT_RENDER_FIXTURE || path.join(buildDir, "tests", "render_fixture"),
    [path.join(media, "fixtures")]);

  const env = { ...process.env, ...extraEnv, PANELKIT_DEVICE_ROOT: root };
  if (examplePlugin) {
    const mountDir = path.join(root, "mnt", "apps");
    fs.mkdirSync(path.join(root, "var", "lib", "pardb"), { recursive: true });
    execFileSync(path.join(repo, "sim", "install-plugin"), [mountDir, "example",
      path.join(buildDir, "plugins", "example", "example-panelkit-plugin.so"), path.join(repo, "plugins", "example")]);
    env.MOUNT_DIR = mountDir;
  } else {
    delete env.MOUNT_DIR;
  }

  const settings = {
    service: { api: "http", ip: "127.0.0.1", port: 0, worker_threads: 2 },
    file_server: { enable: true, document_root: media },
    logging: { level: "debug", stderr: true },
    panelkit: {
      root: { sync: "config", async: "async", rpc: "rpc" },
      device_root: root,
      media_root: "",
      plugin_media_root: "/plugins",
      ...config,
    },
  };
  const configFile = path.join(work, "panelkit.json");
  fs.writeFileSync(configFile, JSON.stringify(settings));
  const logFile = path.join(work, "panelkit.log");
  const log = fs.openSync(logFile, "a");
  const child = spawn(binary, ["-c", configFile], { stdio: ["ignore", log, log], env });
  const port = await waitForAnnouncedPort(logFile, child, 20000);
  return {
    url: `http://127.0.0.1:${port}`,
    root,
    log: () => fs.readFileSync(path.join(work, "panelkit.log"), "utf8"),
    // A value of the device's parameter store, read with the pardb tool.
    storeGet: (key) => execFileSync(path.join(buildDir, "pardb"), ["--root", root, "get", key], { encoding: "utf8" }).replace(/\n$/, ""),
    async stop() {
      if (child.exitCode === null) {
        const exited = new Promise((resolve) => child.once("exit", resolve));
        child.kill("SIGTERM");
        await exited;
      }
      await stopRestarted(root, child.pid);
      fs.closeSync(log);
      fs.rmSync(work, { recursive: true, force: true });
    },
  };
}

const readText = (file) => (fs.existsSync(file) ? fs.readFileSync(file, "utf8") : "");

// Waits until condition() holds; throws after timeoutMs.
export async function waitUntil(condition, timeoutMs, what) {
  const deadline = Date.now() + timeoutMs;
  while (!condition()) {
    if (Date.now() > deadline) {
      throw new Error(`timed out waiting for ${what}`);
    }
    await new Promise((resolve) => setTimeout(resolve, 100));
  }
}

const runningPanelkit = (pid) =>
  fs.existsSync(`/proc/${pid}`) && readText(`/proc/${pid}/cmdline`).split("\0")[0].endsWith("panelkit");

// A simulated reboot starts the service again outside the harness: that one is stopped by its pid.
async function stopRestarted(root, firstPid) {
  const rebootLog = path.join(root, "var/log/sim-reboot.log");
  if (readText(rebootLog).includes("rebooting")) {
    await waitUntil(() => readText(rebootLog).includes("restarted"), 20000, "the restart");
  }
  const pid = Number(readText(path.join(root, "var/run/panelkit.pid")));
  if (!pid || pid === firstPid || !runningPanelkit(pid)) {
    return;
  }
  process.kill(pid, "SIGTERM");
  try {
    await waitUntil(() => !runningPanelkit(pid), 20000, "the restarted service to stop on SIGTERM");
  } catch (error) {
    process.kill(pid, "SIGKILL");
    throw error;
  }
}

export async function launchBrowser() {
  return chromium.launch({
    executablePath: process.env.CHROMIUM || "/usr/bin/chromium",
    headless: true,
    args: [
      "--no-sandbox",
      "--disable-gpu",
      "--disable-quic",
      "--no-first-run",
      "--disable-background-networking",
      "--disable-component-update",
      "--disable-sync",
    ],
  });
}

// A page that fails the test on any script error or refused inline script.
export async function openPage(browser) {
  const page = await browser.newPage();
  const problems = [];
  page.on("pageerror", (error) => problems.push(error.message));
  page.on("console", (message) => {
    if (message.type() === "error") {
      problems.push(message.text());
    }
  });
  page.problems = problems;
  return page;
}

// Runs body against a fresh simulated device and a page that records the status methods it calls
// (page.rpcMethods); the page must end without script errors.
export async function withDevice(browser, body) {
  const device = await startDevice({ simulated: true });
  try {
    const page = await openPage(browser);
    page.rpcMethods = [];
    page.on("request", (request) => {
      if (request.url().endsWith("/async/rpc")) {
        page.rpcMethods.push(JSON.parse(request.postData()).method);
      }
    });
    await body(device, page);
    assert.deepEqual(page.problems, []);
  } finally {
    await device.stop();
  }
}
