// `navigator.credentials` and `PublicKeyCredential` in the world of a page: W3C Web Authentication, Level 2, sections
// 5.1 to 5.5, and the JSON forms of Level 3.
//
// - Runs in the main frame before the page's own scripts.
// - A request is an event on `window` whose detail is JSON text; so is its reply. The program's script in another world
//   passes them on. That world, not this one, says which origin has asked.
// - The page can change everything here, and its requests. That affects only the page.
(() => {
  'use strict';
  const isWeb = location.protocol === 'https:' || location.protocol === 'http:';
  if (!isSecureContext || !isWeb || self.origin === 'null' || 'PublicKeyCredential' in window) return;

  const { ArrayBuffer, CustomEvent, DOMException, Promise, TypeError, Uint8Array } = window;
  const { atob, btoa, crypto } = window;
  const { apply } = Reflect;
  const { parse, stringify } = JSON;
  const addListener = addEventListener.bind(window);
  const removeListener = removeEventListener.bind(window);
  const dispatch = dispatchEvent.bind(window);
  // Throws a TypeError unless `buffer` is an ArrayBuffer, of any frame.
  const { get } = Object.getOwnPropertyDescriptor(ArrayBuffer.prototype, 'byteLength');
  const byteLength = (buffer) => apply(get, buffer, []);
  const kMaxRequest = 256 << 10;  // characters

  const messages = {
    AbortError: 'The request was aborted.',
    ConstraintError: 'The security key does not support what the request requires.',
    InvalidStateError: 'The security key is already registered.',
    NotAllowedError: 'The request was not allowed or has timed out.',
    NotSupportedError: 'The request is not supported.',
    SecurityError: 'The origin may not use this relying party identifier.',
  };
  const failure = (name) =>
      name === 'TypeError' ? new TypeError('A member is not valid.') : new DOMException(messages[name] ?? name, name);

  const toText = (source) => {
    let bytes;
    if (ArrayBuffer.isView(source)) bytes = new Uint8Array(source.buffer, source.byteOffset, source.byteLength);
    else bytes = new Uint8Array(source, 0, byteLength(source));
    if (bytes.length > kMaxRequest) throw new TypeError('A member is too long.');
    let characters = '';
    for (const each of bytes) characters += String.fromCharCode(each);
    return btoa(characters).replaceAll('+', '-').replaceAll('/', '_').replaceAll('=', '');
  };
  const toBuffer = (text) => {
    const characters = atob(String(text).replaceAll('-', '+').replaceAll('_', '/'));
    return Uint8Array.from(characters, (each) => each.charCodeAt(0)).buffer;
  };

  const required = (object, name) => {
    const value = object === null || typeof object !== 'object' ? undefined : object[name];
    if (value === undefined) throw new TypeError(`The member ${name} is missing.`);
    return value;
  };
  const text = (value) => value === undefined ? undefined : String(value);
  const list = (value, item) => value === undefined ? undefined : Array.from(value, item);
  const milliseconds = (value) => value === undefined ? undefined : Number(value) >>> 0;
  const extensions = (value) => value === undefined || value === null ? undefined : {
    appid: text(value.appid),
    credProps: value.credProps === undefined ? undefined : Boolean(value.credProps),
  };
  const selection = (value) => value === undefined || value === null ? undefined : {
    authenticatorAttachment: text(value.authenticatorAttachment),
    residentKey: text(value.residentKey),
    requireResidentKey: Boolean(value.requireResidentKey),
    userVerification: text(value.userVerification),
  };

  // The converters of binary members: from buffers to JSON, and from JSON to buffers.
  const descriptors = (value, convert) => list(value, (each) => ({
    type: text(required(each, 'type')),
    id: convert(required(each, 'id')),
    transports: list(each.transports, text),
  }));
  const creation = (options, convert) => {
    const rp = required(options, 'rp'), user = required(options, 'user');
    return {
      rp: { id: text(rp.id), name: text(required(rp, 'name')) },
      user: {
        id: convert(required(user, 'id')),
        name: text(required(user, 'name')),
        displayName: text(required(user, 'displayName')),
      },
      challenge: convert(required(options, 'challenge')),
      pubKeyCredParams: list(required(options, 'pubKeyCredParams'), (each) => (
          { type: text(required(each, 'type')), alg: Number(required(each, 'alg')) | 0 })),
      timeout: milliseconds(options.timeout),
      excludeCredentials: descriptors(options.excludeCredentials, convert),
      authenticatorSelection: selection(options.authenticatorSelection),
      attestation: text(options.attestation),
      extensions: extensions(options.extensions),
    };
  };
  const request = (options, convert) => ({
    challenge: convert(required(options, 'challenge')),
    timeout: milliseconds(options.timeout),
    rpId: text(options.rpId),
    allowCredentials: descriptors(options.allowCredentials, convert),
    userVerification: text(options.userVerification),
    extensions: extensions(options.extensions),
  });

  const key = {};  // only this script can construct what follows
  const check = (given) => {
    if (given !== key) throw new TypeError('Illegal constructor');
  };

  class Credential {
    #id;
    constructor(given, id) {
      check(given);
      this.#id = id;
    }
    get id() { return this.#id; }
    get type() { return 'public-key'; }
  }

  class AuthenticatorResponse {
    #clientDataJSON;
    constructor(given, json) {
      check(given);
      this.#clientDataJSON = toBuffer(json.clientDataJSON);
    }
    get clientDataJSON() { return this.#clientDataJSON; }
  }

  class AuthenticatorAttestationResponse extends AuthenticatorResponse {
    #json;
    #attestationObject;
    constructor(given, json) {
      super(given, json);
      this.#json = json;
      this.#attestationObject = toBuffer(json.attestationObject);
    }
    get attestationObject() { return this.#attestationObject; }
    getAuthenticatorData() { return toBuffer(this.#json.authenticatorData); }
    getPublicKey() { return toBuffer(this.#json.publicKey); }
    getPublicKeyAlgorithm() { return this.#json.publicKeyAlgorithm; }
    getTransports() { return [...this.#json.transports]; }
  }

  class AuthenticatorAssertionResponse extends AuthenticatorResponse {
    #authenticatorData;
    #signature;
    #userHandle;
    constructor(given, json) {
      super(given, json);
      this.#authenticatorData = toBuffer(json.authenticatorData);
      this.#signature = toBuffer(json.signature);
      this.#userHandle = json.userHandle === undefined ? null : toBuffer(json.userHandle);
    }
    get authenticatorData() { return this.#authenticatorData; }
    get signature() { return this.#signature; }
    get userHandle() { return this.#userHandle; }
  }

  class PublicKeyCredential extends Credential {
    #json;
    #rawId;
    #response;
    constructor(given, json) {
      super(given, json?.id);
      this.#json = json;
      this.#rawId = toBuffer(json.rawId);
      this.#response = json.response.signature === undefined ? new AuthenticatorAttestationResponse(key, json.response)
                                                             : new AuthenticatorAssertionResponse(key, json.response);
    }
    get rawId() { return this.#rawId; }
    get response() { return this.#response; }
    get authenticatorAttachment() { return this.#json.authenticatorAttachment; }
    getClientExtensionResults() { return parse(stringify(this.#json.clientExtensionResults)); }
    toJSON() { return parse(stringify(this.#json)); }

    static async isUserVerifyingPlatformAuthenticatorAvailable() { return false; }
    static async isConditionalMediationAvailable() { return false; }
    static async getClientCapabilities() {
      return {
        conditionalCreate: false,
        conditionalGet: false,
        'extension:appid': true,
        'extension:credProps': true,
        hybridTransport: false,
        passkeyPlatformAuthenticator: false,
        relatedOrigins: false,
        signalAllAcceptedCredentials: false,
        signalCurrentUserDetails: false,
        signalUnknownCredential: false,
        userVerifyingPlatformAuthenticator: false,
      };
    }
    static parseCreationOptionsFromJSON(json) { return creation(json, toBuffer); }
    static parseRequestOptionsFromJSON(json) { return request(json, toBuffer); }
  }

  const send = (message) => dispatch(new CustomEvent('svo-credentials', { detail: message }));

  // Each request has a listener of its own: `document.open` removes the listeners of the window.
  const ask = (method, publicKey, signal) => new Promise((resolve, reject) => {
    const id = crypto.randomUUID();
    const message = stringify({ id, method, publicKey });
    if (message.length > kMaxRequest) throw failure('NotAllowedError');
    const end = () => {
      removeListener('svo-credentials-reply', onReply);
      signal?.removeEventListener('abort', onAbort);
    };
    const onReply = ({ detail }) => {
      const reply = parse(detail);
      if (reply.id !== id) return;
      end();
      if (reply.error !== undefined) reject(failure(reply.error));
      else resolve(new PublicKeyCredential(key, reply.credential));
    };
    const onAbort = () => {
      end();
      send(stringify({ id, method: 'cancel' }));
      reject(signal.reason);
    };
    signal?.throwIfAborted();  // a getter of the options may have aborted
    addListener('svo-credentials-reply', onReply);
    signal?.addEventListener('abort', onAbort);
    send(message);
  });

  class CredentialsContainer {
    constructor(given) { check(given); }
    async create(options) {
      const { publicKey, signal } = options ?? {};
      signal?.throwIfAborted();
      if (publicKey === undefined) throw failure('NotSupportedError');
      return await ask('create', creation(publicKey, toText), signal);
    }
    async get(options) {
      const { mediation, publicKey, signal } = options ?? {};
      signal?.throwIfAborted();
      if (mediation === 'conditional') throw failure('NotSupportedError');
      if (publicKey === undefined || mediation === 'silent') return null;
      return await ask('get', request(publicKey, toText), signal);
    }
    async preventSilentAccess() {}
    async store() { throw failure('NotSupportedError'); }
  }

  const interfaces = [Credential, CredentialsContainer, PublicKeyCredential, AuthenticatorResponse,
                      AuthenticatorAttestationResponse, AuthenticatorAssertionResponse];
  // Many pages copy a credential with a loop over its properties (Web IDL, section 3.7).
  const makeEnumerable = (object, except) => {
    for (const name of Object.getOwnPropertyNames(object))
      if (!except.includes(name)) Object.defineProperty(object, name, { enumerable: true });
  };
  for (const each of interfaces) {
    makeEnumerable(each.prototype, ['constructor']);
    makeEnumerable(each, ['length', 'name', 'prototype']);
    Object.defineProperty(each.prototype, Symbol.toStringTag, { value: each.name, configurable: true });
    Object.defineProperty(window, each.name, { value: each, writable: true, configurable: true });
  }
  const container = new CredentialsContainer(key);
  Object.defineProperty(Navigator.prototype, 'credentials',
                        { get: () => container, enumerable: true, configurable: true });
})();
