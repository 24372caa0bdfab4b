// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

// Settings of the reference extension, all in one place. Tests copy the extension's folder and
// replace this file.
export default Object.freeze({
  // When on, an "oauthExchange" that finds a code and a challenge signs in at once by storing
  // signedInUser as the shared "userInfo", without asking the account service. When off, the
  // message is only acknowledged.
  demonstrationMode: true,

  // The user stored by a demonstration sign-in.
  signedInUser: Object.freeze({
    userId: "reference-user",
    isTestUser: false,
    isAnonymous: false,
    containerId: "reference-container",
  }),

  // The page "oauthOpenLoginTab" opens in a new tab.
  loginPageUrl: "https://www.lexmira.example/login",

  // Writes what the extension does to the background's console.
  verbose: true,
});
