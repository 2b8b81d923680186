"""A security key in software: the commands of CTAP 2.1 and of U2F, without their transport.

- Section numbers are those of CTAP 2.1.
- `wait_for_user` of a Key's owner is called where the user must be present; it returns a status of CTAP.
"""

import os
import struct

from cryptography import x509
from cryptography.hazmat.primitives import hashes, hmac, serialization
from cryptography.hazmat.primitives.asymmetric import ec, ed25519, padding, rsa
from cryptography.hazmat.primitives.ciphers import Cipher, algorithms, modes
from cryptography.hazmat.primitives.kdf.hkdf import HKDF
import datetime

from fido2 import cbor

OK, INVALID_COMMAND, MISSING_PARAMETER = 0x00, 0x01, 0x14
CREDENTIAL_EXCLUDED, UNSUPPORTED_ALGORITHM, KEY_STORE_FULL = 0x19, 0x26, 0x28
UNSUPPORTED_OPTION, NO_CREDENTIALS, NOT_ALLOWED = 0x2B, 0x2E, 0x30
PIN_INVALID, PIN_BLOCKED, PIN_AUTH_INVALID, PIN_AUTH_BLOCKED = 0x31, 0x32, 0x33, 0x34
PIN_NOT_SET, PIN_REQUIRED, LIMIT_EXCEEDED = 0x35, 0x36, 0x15

MAKE_CREDENTIAL, GET_ASSERTION, GET_INFO, CLIENT_PIN, GET_NEXT_ASSERTION = 0x01, 0x02, 0x04, 0x06, 0x08
AAGUID = bytes(range(1, 17))
MAX_TRIES, MAX_TRIES_IN_A_ROW = 8, 3


class Failure(Exception):
    def __init__(self, status):
        self.status = status


def sha256(data):
    digest = hashes.Hash(hashes.SHA256())
    digest.update(data)
    return digest.finalize()


def mac(key, data):
    code = hmac.HMAC(key, hashes.SHA256())
    code.update(data)
    return code.finalize()


def number(value, size=32):
    return value.to_bytes(size, "big")


class PrivateKey:
    def __init__(self, algorithm):
        self.algorithm = algorithm
        if algorithm == -7:
            self.key = ec.generate_private_key(ec.SECP256R1())
        elif algorithm == -8:
            self.key = ed25519.Ed25519PrivateKey.generate()
        else:
            self.key = rsa.generate_private_key(public_exponent=65537, key_size=2048)

    def cose(self):
        public = self.key.public_key()
        if self.algorithm == -7:
            point = public.public_numbers()
            return {1: 2, 3: -7, -1: 1, -2: number(point.x), -3: number(point.y)}
        if self.algorithm == -8:
            raw = public.public_bytes(serialization.Encoding.Raw, serialization.PublicFormat.Raw)
            return {1: 1, 3: -8, -1: 6, -2: raw}
        return {1: 3, 3: -257, -1: number(public.public_numbers().n, 256), -2: number(65537, 3)}

    def sign(self, data):
        if self.algorithm == -7:
            return self.key.sign(data, ec.ECDSA(hashes.SHA256()))
        if self.algorithm == -8:
            return self.key.sign(data)
        return self.key.sign(data, padding.PKCS1v15(), hashes.SHA256())


class PinProtocol:
    """Section 6.5.6 (one) and 6.5.7 (two)."""

    def __init__(self, version):
        self.version = version
        self.key = ec.generate_private_key(ec.SECP256R1())

    def public(self):
        point = self.key.public_key().public_numbers()
        return {1: 2, 3: -25, -1: 1, -2: number(point.x), -3: number(point.y)}

    def shared(self, peer):
        x, y = (int.from_bytes(peer[i], "big") for i in (-2, -3))
        z = self.key.exchange(ec.ECDH(), ec.EllipticCurvePublicNumbers(x, y, ec.SECP256R1()).public_key())
        if self.version == 1:
            return sha256(z)
        derive = lambda info: HKDF(hashes.SHA256(), 32, bytes(32), info).derive(z)
        return derive(b"CTAP2 HMAC key") + derive(b"CTAP2 AES key")

    def _cipher(self, secret, iv):
        return Cipher(algorithms.AES(secret[-32:]), modes.CBC(iv))

    def encrypt(self, secret, data):
        iv = bytes(16) if self.version == 1 else os.urandom(16)
        encryptor = self._cipher(secret, iv).encryptor()
        return (b"" if self.version == 1 else iv) + encryptor.update(data) + encryptor.finalize()

    def decrypt(self, secret, data):
        iv, data = (bytes(16), data) if self.version == 1 else (data[:16], data[16:])
        decryptor = self._cipher(secret, iv).decryptor()
        return decryptor.update(data) + decryptor.finalize()

    def authenticate(self, secret, data):
        code = mac(secret[:32], data)
        return code[:16] if self.version == 1 else code


class Credential:
    def __init__(self, rp_hash, algorithm, user=None, resident=False, hidden=False):
        self.id = os.urandom(48)
        self.rp_hash, self.user, self.resident, self.hidden = rp_hash, user, resident, hidden
        self.key = PrivateKey(algorithm)


class Key:
    """Options: see the module software-keys."""

    def __init__(self):
        self.credentials = []
        self.count = 0
        self.tries = MAX_TRIES
        self.configure({})

    def configure(self, options):
        """Also what happens when the key is plugged in."""
        self.u2f = options.get("u2f", False)
        self.pin = options.get("pin")
        self.resident = options.get("residentKeys", True)
        self.built_in = options.get("builtIn")  # None: not there; a list of statuses, the last of which stays
        self.version = options.get("version", 2.1)
        self.protocol = PinProtocol(options.get("pinProtocol", 1))
        self.algorithms = options.get("algorithms", [-7, -8, -257])
        self.max_list = options.get("maxList", 0)
        self.max_id = options.get("maxId", 0)
        self.hides = options.get("hides", False)
        self.omits_id = options.get("omitsId", False)
        self.wrong_rp = options.get("wrongRp", False)
        self.ignores_verification = options.get("ignoresVerification", False)
        self.other_id = options.get("otherId", False)
        self.signs_nothing = options.get("signsNothing", False)
        self.busy = options.get("busy", False)
        self.full = options.get("full", False)
        self.tries = options.get("tries", self.tries)
        self.failed_in_a_row = 0
        self.token = os.urandom(32)
        self.pending = []

    # CTAP 2

    def handle(self, request, wait_for_user):
        commands = {MAKE_CREDENTIAL: self.make_credential, GET_ASSERTION: self.get_assertion, GET_INFO: self.info,
                    CLIENT_PIN: self.client_pin, GET_NEXT_ASSERTION: self.next_assertion}
        try:
            if request[0] not in commands:
                raise Failure(INVALID_COMMAND)
            parameters = cbor.decode(request[1:]) if len(request) > 1 else {}
            answer = commands[request[0]](parameters, wait_for_user)
            return bytes([OK]) + (b"" if answer is None else cbor.encode(answer))
        except Failure as failure:
            return bytes([failure.status])

    def info(self, *_):
        options = {"rk": self.resident, "up": True, "plat": False, "clientPin": self.pin is not None}
        if self.built_in is not None:
            options["uv"] = True
        if self.version > 2:
            options["pinUvAuthToken"] = True
        answer = {1: ["FIDO_2_0"] + (["FIDO_2_1"] if self.version > 2 else []), 3: AAGUID, 4: options, 5: 1200,
                  6: [self.protocol.version], 9: ["nfc", "usb"],
                  10: [{"alg": each, "type": "public-key"} for each in self.algorithms]}
        if self.max_list:
            answer[7] = self.max_list
        if self.max_id:
            answer[8] = self.max_id
        return answer

    def client_pin(self, parameters, wait_for_user):
        command = parameters[2]
        if command == 1:
            return {3: self.tries}
        if command == 2:
            return {1: self.protocol.public()}
        secret = self.protocol.shared(parameters[3])
        if command in (5, 9):
            self._check_pin(self.protocol.decrypt(secret, parameters[6]))
        elif command == 6:
            self._verify_by_itself(wait_for_user)
        else:
            raise Failure(INVALID_COMMAND)
        return {2: self.protocol.encrypt(secret, self.token)}

    def _check_pin(self, pin_hash):
        if self.pin is None:
            raise Failure(PIN_NOT_SET)
        if self.tries == 0:
            raise Failure(PIN_BLOCKED)
        if self.failed_in_a_row == MAX_TRIES_IN_A_ROW:
            raise Failure(PIN_AUTH_BLOCKED)
        if pin_hash == sha256(self.pin.encode())[:16]:
            self.tries, self.failed_in_a_row = MAX_TRIES, 0
            return
        self.tries -= 1
        self.failed_in_a_row += 1
        if self.tries == 0:
            raise Failure(PIN_BLOCKED)
        raise Failure(PIN_AUTH_BLOCKED if self.failed_in_a_row == MAX_TRIES_IN_A_ROW else PIN_INVALID)

    def _verify_by_itself(self, wait_for_user):
        self._need(wait_for_user())
        status = self.built_in.pop(0) if len(self.built_in) > 1 else self.built_in[0]
        self._need(status)

    @staticmethod
    def _need(status):
        if status != OK:
            raise Failure(status)

    def _verified(self, code, client_data_hash, options, wait_for_user):
        """Whether the user is verified, by a PIN token or by the key itself. An empty code asks for a touch only."""
        if code is not None:
            if len(code) == 0:
                self._need(wait_for_user())
                raise Failure(PIN_NOT_SET if self.pin is None else PIN_INVALID)
            if code != self.protocol.authenticate(self.token, client_data_hash):
                raise Failure(PIN_AUTH_INVALID)
            return not self.ignores_verification
        if options.get("uv"):
            if self.built_in is None:
                raise Failure(UNSUPPORTED_OPTION)
            self._verify_by_itself(wait_for_user)
            return not self.ignores_verification
        return False

    def _data(self, rp_hash, flags, rest=b""):
        self.count += 1
        return (bytes(32) if self.wrong_rp else rp_hash) + struct.pack(">BI", flags, self.count) + rest

    def _check_list(self, ids):
        if (self.max_list and len(ids) > self.max_list) or sum(map(len, ids)) > 1000:
            raise Failure(LIMIT_EXCEEDED)
        if self.max_id and any(len(each) > self.max_id for each in ids):
            raise Failure(LIMIT_EXCEEDED)

    def make_credential(self, parameters, wait_for_user):
        client_data_hash, rp, user, types = (parameters[i] for i in (1, 2, 3, 4))
        options = parameters.get(7, {})
        verified = self._verified(parameters.get(8), client_data_hash, options, wait_for_user)
        rp_hash = sha256(rp["id"].encode())
        excluded = [each["id"] for each in parameters.get(5, [])]
        self._check_list(excluded)
        if any(each.id in excluded and each.rp_hash == rp_hash for each in self.credentials):
            self._need(wait_for_user())
            raise Failure(CREDENTIAL_EXCLUDED)
        algorithm = next((each["alg"] for each in types if each["alg"] in self.algorithms), None)
        if algorithm is None:
            raise Failure(UNSUPPORTED_ALGORITHM)
        if options.get("rk") and not self.resident:
            raise Failure(UNSUPPORTED_OPTION)
        if self.pin is not None and not verified and not self.ignores_verification:
            raise Failure(PIN_REQUIRED)
        self._need(wait_for_user())
        if self.full and options.get("rk"):
            raise Failure(KEY_STORE_FULL)
        credential = Credential(rp_hash, algorithm, user, options.get("rk", False), self.hides)
        if credential.resident:
            same = lambda each: each.resident and each.rp_hash == rp_hash and each.user["id"] == user["id"]
            self.credentials = [each for each in self.credentials if not same(each)]
        self.credentials.append(credential)
        attested = AAGUID + struct.pack(">H", len(credential.id)) + credential.id + cbor.encode(credential.key.cose())
        data = self._data(rp_hash, 0x41 | (0x04 if verified else 0), attested)
        statement = {"alg": algorithm, "sig": credential.key.sign(data + client_data_hash)}
        return {1: "packed", 2: data, 3: statement}

    def get_assertion(self, parameters, wait_for_user):
        rp_id, client_data_hash = parameters[1], parameters[2]
        options = parameters.get(5, {})
        verified = self._verified(parameters.get(6), client_data_hash, options, wait_for_user)
        rp_hash = sha256(rp_id.encode())
        allowed = [each["id"] for each in parameters.get(3, [])]
        self._check_list(allowed)
        found = [each for each in self.credentials if each.rp_hash == rp_hash and (verified or not each.hidden) and
                 (each.id in allowed if allowed else each.resident)]
        if not found:
            raise Failure(NO_CREDENTIALS)
        present = options.get("up", True)
        if present:
            self._need(wait_for_user())
        found.reverse()
        if allowed:
            found = found[:1]
        self.pending = [(each, rp_hash, client_data_hash, verified, present, len(found) > 1) for each in found]
        answer = self.next_assertion()
        if len(found) > 1:
            answer[5] = len(found)
        if self.omits_id and len(allowed) == 1:
            del answer[1]
        if self.other_id:
            answer[1] = {"id": bytes(16), "type": "public-key"}
        if self.signs_nothing:
            answer[3] = b""
        return answer

    def next_assertion(self, *_):
        if not self.pending:
            raise Failure(NOT_ALLOWED)
        credential, rp_hash, client_data_hash, verified, present, several = self.pending.pop(0)
        data = self._data(rp_hash, (0x01 if present else 0) | (0x04 if verified else 0))
        answer = {1: {"id": credential.id, "type": "public-key"}, 2: data, 3: credential.key.sign(data + client_data_hash)}
        if credential.user is not None and credential.resident:
            answer[4] = dict(credential.user) if several and verified else {"id": credential.user["id"]}
        return answer

    # U2F (raw message formats)

    def handle_u2f(self, request, try_touch):
        command, control = request[1], request[2]
        length = int.from_bytes(request[4:7], "big") if len(request) > 7 else 0
        data = request[7:7 + length]
        if command == 3:
            return b"U2F_V2" + b"\x90\x00"
        if command == 1:
            return self._register_u2f(data) if try_touch() else b"\x69\x85"
        if command != 2:
            return b"\x6d\x00"
        known = next((each for each in self.credentials if each.id == data[65:] and each.rp_hash == data[32:64]), None)
        if known is None:
            return b"\x6a\x80"
        if control == 7 or not try_touch():
            return b"\x69\x85"
        self.count += 1
        signed = struct.pack(">BI", 1, self.count)
        return signed + known.key.sign(data[32:64] + signed + data[:32]) + b"\x90\x00"

    def _register_u2f(self, data):
        credential = Credential(data[32:64], -7)
        self.credentials.append(credential)
        point = credential.key.key.public_key().public_bytes(serialization.Encoding.X962,
                                                             serialization.PublicFormat.UncompressedPoint)
        attestation = PrivateKey(-7)
        signature = attestation.sign(b"\0" + data[32:64] + data[:32] + credential.id + point)
        return (b"\x05" + point + bytes([len(credential.id)]) + credential.id + certificate(attestation.key) +
                signature + b"\x90\x00")


def certificate(key):
    name = x509.Name([x509.NameAttribute(x509.NameOID.COMMON_NAME, "Software key")])
    start = datetime.datetime(2020, 1, 1)
    builder = x509.CertificateBuilder().subject_name(name).issuer_name(name).public_key(key.public_key())
    builder = builder.serial_number(1).not_valid_before(start).not_valid_after(start.replace(year=2040))
    return builder.sign(key, hashes.SHA256()).public_bytes(serialization.Encoding.DER)
