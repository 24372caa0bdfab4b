#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
# SPDX-License-Identifier: Apache-2.0

"""Runs Chromium or Firefox headless with a throwaway profile and an unpacked extension.

End-to-end tests use it to put a real browser, with the reference extension (or any other)
loaded, in front of the native messaging host.

    run_browser.py extension-id {chromium|firefox} EXT_DIR
        Prints the id to register the native host for: Chromium's id derived from the
        manifest's "key", or Firefox's browser_specific_settings.gecko.id.

    run_browser.py start {chromium|firefox} EXT_DIR SCRATCH_DIR [--host EXECUTABLE]
                         [--browser-command CMD] [-- EXTRA_BROWSER_ARGS...]
        Prepares the profile SCRATCH_DIR/profile, starts the browser detached from this
        process (on the page the last extra argument names, if it is no option, else on
        about:blank), prints its PID on stdout and exits. The browser's output goes to
        SCRATCH_DIR/browser.log. Files already in the profile are kept, so a test may register
        the native host there first (Chromium reads SCRATCH_DIR/profile/NativeMessagingHosts/).
        --host EXECUTABLE writes the host manifest itself (for Chromium into the profile, for
        Firefox into $HOME/.mozilla/native-messaging-hosts/, the only place Firefox looks).
        Stop the browser with SIGTERM to that PID; the host's stdin then closes.

    run_browser.py profile-dir SCRATCH_DIR
        Prints the profile directory that start uses.

    run_browser.py configure EXT_DIR TARGET_DIR [--demonstration on|off] [--login-page URL]
                             [--user-id ID] [--container-id ID] [--test-user] [--anonymous]
        Copies the reference extension to TARGET_DIR (replacing it) and writes its config.js
        with these settings; unnamed ones keep the defaults of the reference extension.

The environment is passed on unchanged: the native host inherits the browser's environment
(DBUS_SESSION_BUS_ADDRESS included). Without a session bus Chromium gives the host
DBUS_SESSION_BUS_ADDRESS=disabled:, so start a bus first when the host needs one.
"""

import base64
import hashlib
import io
import json
import os
import shutil
import signal
import subprocess
import sys
import zipfile

HOST_NAME = "com.lexmira.companion.ext"

CHROMIUM_COMMAND = "chromium"
FIREFOX_COMMAND = "firefox-esr"

FIREFOX_PREFS = {
    # Unsigned add-ons from the profile's extensions folder, enabled without asking.
    "xpinstall.signatures.required": False,
    "extensions.autoDisableScopes": 0,
    "extensions.enabledScopes": 15,
    # No first-run pages, default-browser question or data reporting.
    "browser.shell.checkDefaultBrowser": False,
    "browser.startup.homepage_override.mstone": "ignore",
    "browser.aboutwelcome.enabled": False,
    "datareporting.policy.dataSubmissionEnabled": False,
    "datareporting.healthreport.uploadEnabled": False,
    "toolkit.telemetry.reportingpolicy.firstRun": False,
    "extensions.update.enabled": False,
    "app.update.enabled": False,
}


def read_manifest(ext_dir):
    with open(os.path.join(ext_dir, "manifest.json"), encoding="utf-8") as f:
        return json.load(f)


def chromium_extension_id(manifest):
    """Chromium's id of an unpacked extension with a "key": the first 128 bits of the SHA-256
    of the DER public key, each hex digit written as a letter a-p."""
    key = manifest.get("key")
    if not key:
        raise SystemExit("manifest.json has no \"key\"; Chromium would derive the id from the path")
    digest = hashlib.sha256(base64.b64decode(key)).hexdigest()[:32]
    return "".join(chr(ord("a") + int(c, 16)) for c in digest)


def gecko_id(manifest):
    settings = manifest.get("browser_specific_settings") or manifest.get("applications") or {}
    gid = settings.get("gecko", {}).get("id")
    if not gid:
        raise SystemExit("manifest.json has no browser_specific_settings.gecko.id")
    return gid


def extension_id(browser, manifest):
    return chromium_extension_id(manifest) if browser == "chromium" else gecko_id(manifest)


def profile_dir(scratch):
    return os.path.join(os.path.abspath(scratch), "profile")


def write_host_manifest(browser, profile, manifest, host):
    if browser == "chromium":
        directory = os.path.join(profile, "NativeMessagingHosts")
        allowed = {"allowed_origins": ["chrome-extension://%s/" % chromium_extension_id(manifest)]}
    else:
        directory = os.path.join(os.path.expanduser("~"), ".mozilla", "native-messaging-hosts")
        allowed = {"allowed_extensions": [gecko_id(manifest)]}
    os.makedirs(directory, exist_ok=True)
    record = {"name": HOST_NAME, "description": "Lexmira Companion", "path": os.path.abspath(host),
              "type": "stdio", **allowed}
    with open(os.path.join(directory, HOST_NAME + ".json"), "w", encoding="utf-8") as f:
        json.dump(record, f, indent=2)


def zip_extension(ext_dir, target):
    """Zips the extension to target with fixed timestamps, and leaves target alone when it
    already holds those bytes: Firefox reinstalls an add-on whose file changed, which restarts
    its background (and its native connection) right after the browser's start."""
    buffer = io.BytesIO()
    with zipfile.ZipFile(buffer, "w", zipfile.ZIP_DEFLATED) as z:
        for root, dirs, files in os.walk(ext_dir):
            dirs.sort()
            for name in sorted(files):
                path = os.path.join(root, name)
                entry = zipfile.ZipInfo(os.path.relpath(path, ext_dir), date_time=(2020, 1, 1, 0, 0, 0))
                entry.compress_type = zipfile.ZIP_DEFLATED
                with open(path, "rb") as f:
                    z.writestr(entry, f.read())
    data = buffer.getvalue()
    try:
        with open(target, "rb") as f:
            if f.read() == data:
                return
    except FileNotFoundError:
        pass
    with open(target, "wb") as f:
        f.write(data)


def with_start_page(extra):
    """The extra arguments, ending with one page to open: about:blank unless they name one (a
    headless browser opens one page only)."""
    extra = list(extra)
    return extra if extra and not extra[-1].startswith("-") else extra + ["about:blank"]


def chromium_command(command, ext_dir, profile, extra):
    args = [command, "--headless=new", "--user-data-dir=" + profile,
            "--load-extension=" + os.path.abspath(ext_dir),
            # Branded builds ignore --load-extension without this; harmless elsewhere.
            "--disable-features=DisableLoadExtensionCommandLineSwitch",
            # Keeps the browser's own secrets out of the Secret Service the tests use.
            "--password-store=basic",
            "--disable-gpu", "--no-first-run", "--no-default-browser-check"]
    if os.geteuid() == 0:
        args.append("--no-sandbox")  # Chromium refuses to run as root with its sandbox
    return args + with_start_page(extra)


def firefox_command(command, ext_dir, profile, manifest, extra):
    with open(os.path.join(profile, "user.js"), "w", encoding="utf-8") as f:
        for name, value in FIREFOX_PREFS.items():
            f.write("user_pref(%s, %s);\n" % (json.dumps(name), json.dumps(value)))
    extensions = os.path.join(profile, "extensions")
    os.makedirs(extensions, exist_ok=True)
    zip_extension(ext_dir, os.path.join(extensions, gecko_id(manifest) + ".xpi"))
    return [command, "--headless", "--profile", profile, "--no-remote"] + with_start_page(extra)


def start(browser, ext_dir, scratch, host, command, extra):
    manifest = read_manifest(ext_dir)
    profile = profile_dir(scratch)
    os.makedirs(profile, exist_ok=True)
    if host:
        write_host_manifest(browser, profile, manifest, host)
    if browser == "chromium":
        args = chromium_command(command or CHROMIUM_COMMAND, ext_dir, profile, extra)
    else:
        args = firefox_command(command or FIREFOX_COMMAND, ext_dir, profile, manifest, extra)
    if not shutil.which(args[0]):
        raise SystemExit("%s: command not found" % args[0])
    log = open(os.path.join(os.path.abspath(scratch), "browser.log"), "ab")
    # Its own session, so that signals meant for the caller's process group don't reach it.
    process = subprocess.Popen(args, stdin=subprocess.DEVNULL, stdout=log, stderr=log,
                               start_new_session=True)
    print(process.pid, flush=True)


CONFIG_DEFAULTS = {
    "demonstrationMode": True,
    "signedInUser": {"userId": "reference-user", "isTestUser": False, "isAnonymous": False,
                     "containerId": "reference-container"},
    "loginPageUrl": "https://www.lexmira.example/login",
    "verbose": True,
}


def configure(ext_dir, target, options):
    """Copies the extension and writes its config.js from the options given."""
    config = json.loads(json.dumps(CONFIG_DEFAULTS))
    user = config["signedInUser"]
    while options:
        option = options.pop(0)
        if option == "--demonstration" and options:
            config["demonstrationMode"] = options.pop(0) == "on"
        elif option == "--login-page" and options:
            config["loginPageUrl"] = options.pop(0)
        elif option == "--user-id" and options:
            user["userId"] = options.pop(0)
        elif option == "--container-id" and options:
            user["containerId"] = options.pop(0)
        elif option == "--test-user":
            user["isTestUser"] = True
        elif option == "--anonymous":
            user["isAnonymous"] = True
        else:
            raise SystemExit("unknown option %s" % option)
    if os.path.exists(target):
        shutil.rmtree(target)
    shutil.copytree(ext_dir, target)
    with open(os.path.join(target, "config.js"), "w", encoding="utf-8") as f:
        f.write("// Written by run_browser.py configure.\nexport default %s;\n"
                % json.dumps(config, indent=2))


def main(argv):
    if len(argv) >= 3 and argv[0] == "extension-id" and argv[1] in ("chromium", "firefox"):
        print(extension_id(argv[1], read_manifest(argv[2])))
        return 0
    if len(argv) >= 3 and argv[0] == "configure":
        configure(argv[1], argv[2], list(argv[3:]))
        return 0
    if len(argv) == 2 and argv[0] == "profile-dir":
        print(profile_dir(argv[1]))
        return 0
    if len(argv) >= 4 and argv[0] == "start" and argv[1] in ("chromium", "firefox"):
        browser, ext_dir, scratch = argv[1], argv[2], argv[3]
        rest = argv[4:]
        extra = []
        if "--" in rest:
            extra = rest[rest.index("--") + 1:]
            rest = rest[:rest.index("--")]
        host = command = None
        while rest:
            option = rest.pop(0)
            if option == "--host" and rest:
                host = rest.pop(0)
            elif option == "--browser-command" and rest:
                command = rest.pop(0)
            else:
                print("unknown option %s" % option, file=sys.stderr)
                return 2
        start(browser, ext_dir, scratch, host, command, extra)
        return 0
    print(__doc__, file=sys.stderr)
    return 2


if __name__ == "__main__":
    signal.signal(signal.SIGPIPE, signal.SIG_DFL)
    sys.exit(main(sys.argv[1:]))
