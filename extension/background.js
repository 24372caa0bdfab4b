// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

// Background of the reference extension: Chromium runs it as a module service worker, Firefox
// as a module background script. It keeps a connection to the companion's native host and
// answers the companion's messages.
import config from "./config.js";
import { CompanionMessages, LexmiraNative, extensionApi } from "./lib/lexmira-native.js";

const api = extensionApi();
const log = config.verbose ? (...args) => console.log("[lexmira]", ...args) : () => {};

const native = new LexmiraNative({ log });

native.on("connected", (welcome) => log("connected to the companion in", welcome.browser));
native.on("disconnected", (reason) => log("companion gone:", reason));

// The companion stored the code and challenge of a web sign-in and asks for the token exchange.
native.handle(CompanionMessages.oauthExchange, async (userInfo) => {
  let exchange = await native.shared.oauthExchangeMessage.get();
  if (!exchange && typeof userInfo?.code === "string" && typeof userInfo?.codeChallenge === "string")
    exchange = { code: userInfo.code, codeChallenge: userInfo.codeChallenge };
  if (!exchange) {
    log("oauthExchange without a valid code and challenge: nothing to sign in with");
    return;
  }
  if (!config.demonstrationMode) {
    log("oauthExchange received; sign-in is left to the account service");
    return;
  }
  await native.shared.userInfo.set(config.signedInUser);
  log("signed in as", config.signedInUser.userId);
});

// The companion asks for the login page.
native.handle(CompanionMessages.oauthOpenLoginTab, async () => {
  const requested = await native.shared.oauthOpenLoginTabMessage.get();
  log("opening the login page; stored request:", requested);
  await api.tabs.create({ url: config.loginPageUrl, active: true });
});

// The companion hands the user over to the browser: bring a browser window to the front.
native.handle(CompanionMessages.openSafari, async () => {
  let window = null;
  try {
    window = await api.windows.getLastFocused({ windowTypes: ["normal"] });
  } catch {
    // no window at all
  }
  if (window?.id !== undefined) await api.windows.update(window.id, { focused: true, drawAttention: true });
  else await api.windows.create({ focused: true });
});

// Connect when the background starts (browser start, install, wake-up); start() is idempotent.
api.runtime.onStartup.addListener(() => native.start());
api.runtime.onInstalled.addListener(() => native.start());
native.start();
