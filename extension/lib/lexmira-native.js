// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

/**
 * @file The extension's side of the connection to Lexmira Companion's native host.
 *
 * One ES module with no dependencies; copy it into any Manifest V3 extension that has the
 * "nativeMessaging" permission. It works with the `browser.*` namespace (Firefox) and the
 * `chrome.*` namespace (Chromium family).
 *
 * What it does:
 *  - connects to the native host `com.lexmira.companion.ext`, says `hello` and waits for the
 *    host's `welcome` (which names the browser);
 *  - reconnects with back-off whenever the host goes away;
 *  - sends requests (shared suite, keychain) with ids and a time-out, as promises;
 *  - answers the companion's messages ("oauthExchange", ...) through handlers registered by
 *    name, and answers every other name with an error;
 *  - encodes and decodes the four shared values exactly as the companion stores them.
 *
 * @example
 * import { LexmiraNative } from "./lib/lexmira-native.js";
 * const native = new LexmiraNative();
 * native.handle("openSafari", async () => { await focusSomeWindow(); });
 * native.start();
 * const user = await native.shared.userInfo.get();
 */

/** Name of the native messaging host, as registered with the browser. */
export const HOST_NAME = "com.lexmira.companion.ext";

/** Version of the wire protocol this module speaks. */
export const PROTOCOL_VERSION = 1;

/** Keys of the values the companion and the extension share. */
export const SharedKeys = Object.freeze({
  userInfo: "userInfo",
  companionContainerId: "companionContainerId",
  oauthExchangeMessage: "message.oauthExchangeMessage",
  oauthOpenLoginTabMessage: "message.oauthOpenLoginTabMessage",
});

/** Names of the messages the companion sends to the extension. */
export const CompanionMessages = Object.freeze({
  oauthExchange: "oauthExchange",
  oauthOpenLoginTab: "oauthOpenLoginTab",
  openSafari: "openSafari",
});

/** Keychain status codes the host answers with (any other non-zero value is a failure). */
export const KeychainStatus = Object.freeze({
  success: 0,
  itemNotFound: -25300,
});

/**
 * The browser's extension API: `browser` where it exists (Firefox), else `chrome`.
 * @returns {object}
 */
export function extensionApi() {
  if (typeof globalThis.browser !== "undefined" && globalThis.browser?.runtime) return globalThis.browser;
  if (typeof globalThis.chrome !== "undefined" && globalThis.chrome?.runtime) return globalThis.chrome;
  throw new Error("No extension API (neither browser.* nor chrome.*) in this context");
}

// ---------------------------------------------------------------------------------------------
// Bytes, base64 and UTF-8

const utf8Encoder = new TextEncoder();
const utf8Decoder = new TextDecoder("utf-8", { fatal: true });

/**
 * UTF-8 bytes of a string.
 * @param {string} text
 * @returns {Uint8Array}
 */
export function utf8Encode(text) {
  return utf8Encoder.encode(text);
}

/**
 * The string that UTF-8 bytes spell; throws TypeError on bytes that are not UTF-8.
 * @param {Uint8Array} bytes
 * @returns {string}
 */
export function utf8Decode(bytes) {
  return utf8Decoder.decode(bytes);
}

/**
 * Standard base64 (with padding) of bytes.
 * @param {Uint8Array|ArrayBuffer} bytes
 * @returns {string}
 */
export function bytesToBase64(bytes) {
  const view = bytes instanceof Uint8Array ? bytes : new Uint8Array(bytes);
  let binary = "";
  const chunk = 0x8000;
  for (let i = 0; i < view.length; i += chunk)
    binary += String.fromCharCode.apply(null, view.subarray(i, i + chunk));
  return btoa(binary);
}

/**
 * Bytes of standard base64 text; throws on text that is not base64.
 * @param {string} text
 * @returns {Uint8Array}
 */
export function base64ToBytes(text) {
  const binary = atob(text);
  const bytes = new Uint8Array(binary.length);
  for (let i = 0; i < binary.length; i++) bytes[i] = binary.charCodeAt(i);
  return bytes;
}

// ---------------------------------------------------------------------------------------------
// Encoding of shared values

/**
 * The bytes the shared suite holds for a value: the JSON text of a one-element array holding
 * the value (null for none), with object keys in insertion order, no spaces, every "/" written
 * as "\/", and everything else (non-ASCII included) as plain UTF-8. These are exactly the bytes
 * the companion writes, e.g. `["abc"]`, `[true]`, `[null]`.
 * Throws when the value cannot be encoded (a string with a lone surrogate, a cycle, ...).
 * @param {*} value a JSON-encodable value, or null/undefined for none
 * @returns {Uint8Array}
 */
export function encodeSharedValue(value) {
  const element = value === undefined ? null : value;
  const text = JSON.stringify([element], (key, v) => {
    if (typeof v === "string" && typeof v.isWellFormed === "function" && !v.isWellFormed())
      throw new TypeError("A string with a lone surrogate cannot be stored");
    return v;
  });
  if (text === undefined) throw new TypeError("Value cannot be encoded as JSON");
  // Outside strings JSON has no "/", so every one found is inside a string.
  return utf8Encode(text.replace(/\//g, "\\/"));
}

/**
 * The value shared-suite bytes hold: the single element of a one-element JSON array.
 * Missing bytes, bytes that are not UTF-8 JSON (or escape a lone surrogate), anything but an
 * array of exactly one element, `[null]`, and an element that `accept` refuses all read as
 * null (none).
 * @param {Uint8Array|null|undefined} bytes
 * @param {(element: *) => boolean} [accept] type check of the element
 * @returns {*} the element, or null
 */
export function decodeSharedValue(bytes, accept = () => true) {
  if (bytes == null) return null;
  let array;
  try {
    // An escaped lone surrogate ("\ud800") is not text; the companion's reader refuses it too.
    array = JSON.parse(utf8Decode(bytes), (key, v) => {
      if (typeof v === "string" && typeof v.isWellFormed === "function" && !v.isWellFormed())
        throw new SyntaxError("lone surrogate");
      return v;
    });
  } catch {
    return null;
  }
  if (!Array.isArray(array) || array.length !== 1) return null;
  const element = array[0];
  if (element === null || !accept(element)) return null;
  return element;
}

const isString = (v) => typeof v === "string";
const isBoolean = (v) => typeof v === "boolean";
const isObject = (v) => typeof v === "object" && v !== null && !Array.isArray(v);

/**
 * @typedef {object} UserInfo
 * @property {string} userId the account's user identifier
 * @property {boolean} isTestUser the account is a test account
 * @property {boolean} isAnonymous the user has not signed in
 * @property {string} containerId the user's container identifier
 */

/**
 * @typedef {object} OAuthExchangeMessage
 * @property {string} code the authorisation code from the sign-in callback
 * @property {string} codeChallenge the PKCE code challenge from the sign-in callback
 */

/**
 * How one shared value is turned into a JSON element and back.
 * @typedef {object} SharedCodec
 * @property {(value: *) => *} toJson the JSON element stored for a (non-null) value
 * @property {(element: *) => *} fromJson the value for a stored element, or null when the
 *   element is not a valid one
 */

/** @type {Object<string, SharedCodec>} */
export const SharedCodecs = Object.freeze({
  /** A UserInfo record: all four fields required with their types; written in field order. */
  userInfo: {
    toJson: (u) => ({
      userId: u.userId,
      isTestUser: u.isTestUser,
      isAnonymous: u.isAnonymous,
      containerId: u.containerId,
    }),
    fromJson: (e) =>
      isObject(e) &&
      isString(e.userId) &&
      isBoolean(e.isTestUser) &&
      isBoolean(e.isAnonymous) &&
      isString(e.containerId)
        ? { userId: e.userId, isTestUser: e.isTestUser, isAnonymous: e.isAnonymous, containerId: e.containerId }
        : null,
  },
  /** A string. */
  string: {
    toJson: (s) => s,
    fromJson: (e) => (isString(e) ? e : null),
  },
  /** An OAuthExchangeMessage: "code" and "codeChallenge", both strings; written in that order. */
  oauthExchangeMessage: {
    toJson: (m) => ({ code: m.code, codeChallenge: m.codeChallenge }),
    fromJson: (e) =>
      isObject(e) && isString(e.code) && isString(e.codeChallenge)
        ? { code: e.code, codeChallenge: e.codeChallenge }
        : null,
  },
  /** A boolean. */
  boolean: {
    toJson: (b) => b,
    fromJson: (e) => (isBoolean(e) ? e : null),
  },
});

/**
 * Encodes a value of a shared key with its codec (null/undefined as none).
 * @param {SharedCodec} codec
 * @param {*} value
 * @returns {Uint8Array}
 */
export function encodeWith(codec, value) {
  return encodeSharedValue(value == null ? null : codec.toJson(value));
}

/**
 * Decodes stored bytes with a codec; anything unusable reads as null.
 * @param {SharedCodec} codec
 * @param {Uint8Array|null} bytes
 * @returns {*}
 */
export function decodeWith(codec, bytes) {
  const element = decodeSharedValue(bytes);
  return element === null ? null : codec.fromJson(element);
}

// ---------------------------------------------------------------------------------------------
// Errors

/** A request the host answered with `{"type":"error"}`, or one that failed on the way. */
export class LexmiraNativeError extends Error {
  /**
   * @param {string} message
   * @param {string} [code] "host" (the host's error), "timeout", "disconnected" or "stopped"
   */
  constructor(message, code = "host") {
    super(message);
    this.name = "LexmiraNativeError";
    this.code = code;
  }
}

// ---------------------------------------------------------------------------------------------
// The connection

/**
 * @typedef {object} LexmiraNativeOptions
 * @property {string} [hostName] native host to connect to (default HOST_NAME)
 * @property {number} [requestTimeoutMs] time-out of one request, waiting for the connection
 *   included (default 10000)
 * @property {number} [reconnectInitialDelayMs] first wait before reconnecting (default 500)
 * @property {number} [reconnectMaxDelayMs] longest wait between attempts (default 10000)
 * @property {object} [api] the extension API to use (default: browser.* or chrome.*)
 * @property {(...args: *) => void} [log] diagnostics (default: nothing)
 */

/**
 * @typedef {object} Welcome
 * @property {number} version protocol version of the host
 * @property {string} browser the browser's display name, e.g. "Chromium" or "Firefox"
 */

/**
 * @callback DispatchHandler
 * @param {Object<string, *>|null} userInfo the message's user info (null when it has none)
 * @param {{name: string, id: number}} message the dispatch itself
 * @returns {void|Promise<void>} resolve to acknowledge; throw or reject to answer an error,
 *   whose message becomes the companion's error text. The companion waits 4 s at most.
 */

/**
 * Connection to the companion's native host.
 *
 * Events (see {@link LexmiraNative#on}):
 *  - "connected" (welcome: {@link Welcome}) — the host answered hello;
 *  - "disconnected" (reason: string) — the host went away; a reconnect is scheduled;
 *  - "suite.changed" (key: string) — a key observed with suite.observe changed;
 *  - "error" (message: string) — an error frame that belongs to no request.
 */
export class LexmiraNative {
  /** @param {LexmiraNativeOptions} [options] */
  constructor(options = {}) {
    this.hostName = options.hostName ?? HOST_NAME;
    this.requestTimeoutMs = options.requestTimeoutMs ?? 10000;
    this.reconnectInitialDelayMs = options.reconnectInitialDelayMs ?? 500;
    this.reconnectMaxDelayMs = options.reconnectMaxDelayMs ?? 10000;
    this.api = options.api ?? extensionApi();
    this.log = options.log ?? (() => {});

    /** @type {Welcome|null} the last welcome, while connected */
    this.welcome = null;

    this._port = null;
    this._started = false;
    this._nextId = 1;
    this._pending = new Map(); // id -> {resolve, reject, timer, kind}
    this._handlers = new Map(); // message name -> DispatchHandler
    this._listeners = new Map(); // event -> Set of callbacks
    this._observed = new Set(); // keys to observe again after a reconnect
    this._reconnectDelay = this.reconnectInitialDelayMs;
    this._reconnectTimer = null;
    this._readyWaiters = [];

    this.suite = {
      /**
       * Stored bytes of a key of the shared suite, or null when nothing is stored.
       * @param {string} key
       * @returns {Promise<Uint8Array|null>}
       */
      get: async (key) => {
        const answer = await this.request({ type: "suite.get", key });
        return answer.data == null ? null : base64ToBytes(answer.data);
      },
      /**
       * Stores bytes under a key; null removes the key.
       * @param {string} key
       * @param {Uint8Array|null} bytes
       * @returns {Promise<void>}
       */
      set: async (key, bytes) => {
        await this.request({ type: "suite.set", key, data: bytes == null ? null : bytesToBase64(bytes) });
      },
      /**
       * Asks the host for "suite.changed" events of a key; kept across reconnects.
       * @param {string} key
       * @returns {Promise<void>}
       */
      observe: async (key) => {
        this._observed.add(key);
        await this.request({ type: "suite.observe", key });
      },
    };

    this.keychain = {
      /**
       * Reads the keychain item of an account.
       * @param {string} account
       * @param {{persistentRef?: boolean}} [options] persistentRef: ask for the item's
       *   persistent reference instead of its secret
       * @returns {Promise<{status: number, data: Uint8Array|null}>}
       */
      get: (account, options = {}) =>
        this._keychain({ type: "keychain.get", account, persistentRef: !!options.persistentRef }),
      /**
       * Stores the secret of an account (null deletes it).
       * @param {string} account
       * @param {Uint8Array|null} bytes
       * @returns {Promise<{status: number, data: Uint8Array|null}>}
       */
      set: (account, bytes) =>
        this._keychain({ type: "keychain.set", account, data: bytes == null ? null : bytesToBase64(bytes) }),
      /**
       * Deletes the keychain item of an account.
       * @param {string} account
       * @returns {Promise<{status: number, data: Uint8Array|null}>}
       */
      delete: (account) => this._keychain({ type: "keychain.delete", account }),
      /**
       * The secret of an account as UTF-8 text, or null when there is none.
       * @param {string} account
       * @returns {Promise<string|null>}
       */
      getString: async (account) => {
        const { status, data } = await this.keychain.get(account);
        if (status === KeychainStatus.itemNotFound) return null;
        if (status !== KeychainStatus.success) throw new LexmiraNativeError(`Keychain status ${status}`);
        return data == null ? null : utf8Decode(data);
      },
      /**
       * Stores UTF-8 text as the secret of an account (null deletes it).
       * @param {string} account
       * @param {string|null} text
       * @returns {Promise<void>}
       */
      setString: async (account, text) => {
        const { status } = await this.keychain.set(account, text == null ? null : utf8Encode(text));
        if (status !== KeychainStatus.success && !(text == null && status === KeychainStatus.itemNotFound))
          throw new LexmiraNativeError(`Keychain status ${status}`);
      },
    };

    /**
     * The four shared values, typed.
     * @type {{userInfo: SharedValue, companionContainerId: SharedValue,
     *         oauthExchangeMessage: SharedValue, oauthOpenLoginTabMessage: SharedValue}}
     */
    this.shared = {
      userInfo: new SharedValue(this, SharedKeys.userInfo, SharedCodecs.userInfo),
      companionContainerId: new SharedValue(this, SharedKeys.companionContainerId, SharedCodecs.string),
      oauthExchangeMessage: new SharedValue(this, SharedKeys.oauthExchangeMessage, SharedCodecs.oauthExchangeMessage),
      oauthOpenLoginTabMessage: new SharedValue(this, SharedKeys.oauthOpenLoginTabMessage, SharedCodecs.boolean),
    };
  }

  /**
   * Registers the handler of a message name (replacing an earlier one). Names without a
   * handler are answered with an error.
   * @param {string} name
   * @param {DispatchHandler} handler
   * @returns {LexmiraNative} this
   */
  handle(name, handler) {
    this._handlers.set(name, handler);
    return this;
  }

  /**
   * Subscribes to an event; returns the function that ends the subscription.
   * @param {"connected"|"disconnected"|"suite.changed"|"error"} event
   * @param {(arg: *) => void} callback
   * @returns {() => void}
   */
  on(event, callback) {
    if (!this._listeners.has(event)) this._listeners.set(event, new Set());
    this._listeners.get(event).add(callback);
    return () => this._listeners.get(event)?.delete(callback);
  }

  /** Whether the host has answered hello on the current connection. */
  get connected() {
    return this.welcome !== null;
  }

  /** The browser's display name as the host reports it, or null while not connected. */
  get browserName() {
    return this.welcome?.browser ?? null;
  }

  /**
   * Connects, and keeps reconnecting whenever the host goes away, until stop(). Calling it
   * again while started does nothing.
   * @returns {LexmiraNative} this
   */
  start() {
    if (this._started) return this;
    this._started = true;
    this._connect();
    return this;
  }

  /** Disconnects and stops reconnecting; pending requests fail. */
  stop() {
    this._started = false;
    clearTimeout(this._reconnectTimer);
    this._reconnectTimer = null;
    const port = this._port;
    this._port = null;
    this.welcome = null;
    if (port) {
      try {
        port.disconnect();
      } catch {
        // already gone
      }
    }
    const stopped = new LexmiraNativeError("Connection stopped", "stopped");
    this._failPending(stopped);
    const waiters = this._readyWaiters;
    this._readyWaiters = [];
    for (const waiter of waiters) {
      clearTimeout(waiter.timer);
      waiter.reject(stopped);
    }
  }

  /**
   * Resolves with the welcome once the host has answered hello (at once when it already has).
   * @param {number} [timeoutMs] default: the request time-out
   * @returns {Promise<Welcome>}
   */
  ready(timeoutMs = this.requestTimeoutMs) {
    if (this.welcome) return Promise.resolve(this.welcome);
    return new Promise((resolve, reject) => {
      const waiter = { resolve, reject };
      waiter.timer = setTimeout(() => {
        this._readyWaiters = this._readyWaiters.filter((w) => w !== waiter);
        reject(new LexmiraNativeError("Timed out waiting for the native host", "timeout"));
      }, timeoutMs);
      this._readyWaiters.push(waiter);
    });
  }

  /**
   * Sends a request and resolves with the host's "result" frame. A request made while not
   * connected waits for the connection; the time-out covers the wait. Rejects with
   * LexmiraNativeError on an "error" frame, a time-out or a lost connection.
   * @param {object} body the request without "id", e.g. {type: "suite.get", key: "userInfo"}
   * @param {{timeoutMs?: number}} [options]
   * @returns {Promise<object>}
   */
  async request(body, options = {}) {
    const timeoutMs = options.timeoutMs ?? this.requestTimeoutMs;
    const deadline = Date.now() + timeoutMs;
    if (!this._started) throw new LexmiraNativeError("Connection not started (call start())", "stopped");
    await this.ready(timeoutMs);
    const id = this._nextId++;
    return new Promise((resolve, reject) => {
      const timer = setTimeout(() => {
        this._pending.delete(id);
        reject(new LexmiraNativeError(`No answer to ${body.type} within ${timeoutMs} ms`, "timeout"));
      }, Math.max(0, deadline - Date.now()));
      this._pending.set(id, { resolve, reject, timer });
      if (!this._post({ ...body, id })) {
        clearTimeout(timer);
        this._pending.delete(id);
        reject(new LexmiraNativeError("The native host is not connected", "disconnected"));
      }
    });
  }

  // -- internals --------------------------------------------------------------------------

  async _keychain(body) {
    const answer = await this.request(body);
    return {
      status: typeof answer.status === "number" ? answer.status : -1,
      data: answer.data == null ? null : base64ToBytes(answer.data),
    };
  }

  _emit(event, arg) {
    for (const callback of this._listeners.get(event) ?? []) {
      try {
        callback(arg);
      } catch (e) {
        this.log("listener of", event, "failed:", e);
      }
    }
  }

  _post(message) {
    if (!this._port) return false;
    try {
      this._port.postMessage(message);
      return true;
    } catch (e) {
      this.log("postMessage failed:", e);
      return false;
    }
  }

  _connect() {
    this._reconnectTimer = null;
    if (!this._started) return;
    let port;
    try {
      port = this.api.runtime.connectNative(this.hostName);
    } catch (e) {
      this.log("connectNative failed:", e);
      this._scheduleReconnect(String(e?.message ?? e));
      return;
    }
    this._port = port;
    port.onMessage.addListener((message) => {
      if (this._port === port) this._receive(message);
    });
    port.onDisconnect.addListener((p) => {
      if (this._port !== port) return;
      // Chromium reports why in runtime.lastError, Firefox in port.error.
      const reason =
        p?.error?.message ?? this.api.runtime.lastError?.message ?? "The native host closed the connection";
      this._lost(reason);
    });
    this._post({ type: "hello", version: PROTOCOL_VERSION });
  }

  _lost(reason) {
    const wasConnected = this.connected;
    this._port = null;
    this.welcome = null;
    this.log("native host disconnected:", reason);
    this._failPending(new LexmiraNativeError(`The native host went away: ${reason}`, "disconnected"));
    if (wasConnected) this._reconnectDelay = this.reconnectInitialDelayMs;
    this._emit("disconnected", reason);
    this._scheduleReconnect(reason);
  }

  _scheduleReconnect() {
    if (!this._started || this._reconnectTimer) return;
    const delay = this._reconnectDelay;
    this._reconnectDelay = Math.min(this._reconnectDelay * 2, this.reconnectMaxDelayMs);
    this._reconnectTimer = setTimeout(() => this._connect(), delay);
  }

  _failPending(error) {
    for (const [id, pending] of this._pending) {
      clearTimeout(pending.timer);
      pending.reject(error);
      this._pending.delete(id);
    }
  }

  _receive(message) {
    if (!isObject(message)) return;
    switch (message.type) {
      case "welcome":
        this._welcome(message);
        break;
      case "result": {
        const pending = this._pending.get(message.id);
        if (!pending) return;
        this._pending.delete(message.id);
        clearTimeout(pending.timer);
        pending.resolve(message);
        break;
      }
      case "error": {
        const text = String(message.message ?? "Unknown error of the native host");
        const pending = this._pending.get(message.id);
        if (!pending) {
          this._emit("error", text);
          return;
        }
        this._pending.delete(message.id);
        clearTimeout(pending.timer);
        pending.reject(new LexmiraNativeError(text, "host"));
        break;
      }
      case "dispatch":
        this._dispatch(message);
        break;
      case "suite.changed":
        if (typeof message.key === "string") this._emit("suite.changed", message.key);
        break;
      default:
        this.log("ignoring a frame of type", message.type);
    }
  }

  _welcome(message) {
    this.welcome = {
      version: typeof message.version === "number" ? message.version : PROTOCOL_VERSION,
      browser: typeof message.browser === "string" ? message.browser : "",
    };
    this._reconnectDelay = this.reconnectInitialDelayMs;
    const waiters = this._readyWaiters;
    this._readyWaiters = [];
    for (const waiter of waiters) {
      clearTimeout(waiter.timer);
      waiter.resolve(this.welcome);
    }
    // Observations belong to a connection: ask again, and tell observers that they may have
    // missed changes while the host was away.
    for (const key of this._observed) {
      this.request({ type: "suite.observe", key })
        .then(() => this._emit("suite.changed", key))
        .catch((e) => this.log("observing", key, "again failed:", e));
    }
    this._emit("connected", this.welcome);
  }

  async _dispatch(message) {
    const id = message.id;
    const name = String(message.name ?? "");
    const userInfo = isObject(message.userInfo) ? message.userInfo : null;
    const handler = this._handlers.get(name);
    let error = null;
    if (!handler) {
      error = `The extension does not handle the message "${name}"`;
    } else {
      try {
        await handler(userInfo, { name, id });
      } catch (e) {
        error = String(e?.message ?? e) || "The extension failed to handle the message";
      }
    }
    this._post({ type: "reply", id, error });
  }
}

/**
 * One typed value of the shared suite.
 */
export class SharedValue {
  /**
   * @param {LexmiraNative} native
   * @param {string} key
   * @param {SharedCodec} codec
   */
  constructor(native, key, codec) {
    this.native = native;
    this.key = key;
    this.codec = codec;
  }

  /**
   * The stored value, or null when nothing usable is stored.
   * @returns {Promise<*>}
   */
  async get() {
    return decodeWith(this.codec, await this.native.suite.get(this.key));
  }

  /**
   * Stores a value; null stores none (`[null]`, the key stays).
   * @param {*} value
   * @returns {Promise<void>}
   */
  async set(value) {
    await this.native.suite.set(this.key, encodeWith(this.codec, value));
  }

  /**
   * Removes the key from the suite.
   * @returns {Promise<void>}
   */
  async remove() {
    await this.native.suite.set(this.key, null);
  }

  /**
   * Calls back with the value read afresh after every change of the key (and after a
   * reconnect). Returns the function that ends the subscription.
   * @param {(value: *) => void} callback
   * @returns {Promise<() => void>}
   */
  async observe(callback) {
    const off = this.native.on("suite.changed", (key) => {
      if (key !== this.key) return;
      this.get().then(callback, (e) => this.native.log("reading", this.key, "failed:", e));
    });
    try {
      await this.native.suite.observe(this.key);
    } catch (e) {
      off();
      throw e;
    }
    return off;
  }
}
