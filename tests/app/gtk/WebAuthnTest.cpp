#include "app/gtk/keys/WebAuthn.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <optional>
#include <string>

namespace {

using testing::ElementsAre;
using testing::SizeIs;

Bytes sequence(std::size_t size, std::uint8_t first = 1) {
  Bytes bytes(size);
  for (std::size_t i = 0; i < size; ++i)
    bytes[i] = static_cast<std::uint8_t>(first + i);
  return bytes;
}

TEST(RelyingPartyTest, IsTheHostOrAParentInItsDomain) {
  EXPECT_TRUE(mayUse("a.example.com", "a.example.com"));
  EXPECT_TRUE(mayUse("a.b.example.com", "b.example.com"));
  EXPECT_TRUE(mayUse("a.b.example.com", "example.com"));
  EXPECT_TRUE(mayUse("shop.example.co.uk", "example.co.uk"));
  EXPECT_TRUE(mayUse("localhost", "localhost"));
  EXPECT_TRUE(mayUse("sso", "sso"));
  EXPECT_TRUE(mayUse("login.app.localhost", "app.localhost"));
  EXPECT_TRUE(mayUse("xn--bcher-kva.example.com", "xn--bcher-kva.example.com"));
}

TEST(RelyingPartyTest, IsNoPublicSuffix) {
  EXPECT_FALSE(mayUse("a.example.com", "com"));
  EXPECT_FALSE(mayUse("shop.example.co.uk", "co.uk"));
  EXPECT_FALSE(mayUse("me.github.io", "github.io"));
  EXPECT_FALSE(mayUse("github.io", "github.io"));
  EXPECT_FALSE(mayUse("com", "com"));
  EXPECT_FALSE(mayUse("host.internal", "internal"));
  EXPECT_FALSE(mayUse("app.localhost", "localhost"));
  EXPECT_FALSE(mayUse("a.b.ck", "b.ck")) << "a wildcard rule";
}

// "s3.amazonaws.com" is a public suffix, "amazonaws.com" is not.
TEST(RelyingPartyTest, IsNoParentOfAPublicSuffix) {
  EXPECT_FALSE(mayUse("bucket.s3.amazonaws.com", "amazonaws.com"));
  EXPECT_TRUE(mayUse("a.bucket.s3.amazonaws.com", "bucket.s3.amazonaws.com"));
}

TEST(RelyingPartyTest, IsNoOtherHost) {
  EXPECT_FALSE(mayUse("example.com", "a.example.com"));
  EXPECT_FALSE(mayUse("a.example.com", "b.example.com"));
  EXPECT_FALSE(mayUse("evilexample.com", "example.com"));
  EXPECT_FALSE(mayUse("a.example.com", "ple.com"));
  EXPECT_FALSE(mayUse("a.example.com", "example.org"));
}

TEST(RelyingPartyTest, IsNoAddress) {
  for (const char* const address : {"127.0.0.1", "[::1]", "::1", "0x7f.1", "1.2.3.0x4", "2130706433"})
    EXPECT_FALSE(mayUse(address, address)) << address;
  EXPECT_FALSE(mayUse("10.0.0.1", "0.0.1"));
  EXPECT_FALSE(mayUse("a.09", "a.09"));
  EXPECT_FALSE(mayUse("a.0x", "a.0x"));
  for (const char* const name : {"2fa", "3com", "1-sso", "0xyz", "0x7fg", "a.4x4"})
    EXPECT_TRUE(mayUse(name, name)) << name;
}

TEST(RelyingPartyTest, HasTheFormOfAHost) {
  for (const char* const id :
       {"", ".", ".example.com", "example.com.", "a..example.com", "Example.com", "example.com:443",
        "https://example.com", "example.com/", "b\u00fccher.example", "exam ple.com", "*.example.com"}) {
    EXPECT_FALSE(mayUse("a.example.com", id)) << id;
    EXPECT_FALSE(mayUse(id, id)) << id;
  }
  EXPECT_FALSE(mayUse("example.com", std::string("example.com\0", 12)));
  const std::string tooLong = std::string(250, 'a') + ".com";
  EXPECT_FALSE(mayUse(tooLong, tooLong));
}

TEST(ClientDataTest, IsSerializedInTheStandardsOrder) {
  EXPECT_EQ(clientDataJson("webauthn.get", {1, 2, 3}, "https://a.example:8443"),
            R"({"type":"webauthn.get","challenge":"AQID","origin":"https://a.example:8443","crossOrigin":false})");
  EXPECT_EQ(clientDataJson("a", {}, "\"\\"), R"({"type":"a","challenge":"","origin":"\"\\","crossOrigin":false})");
}

TEST(AttestationTest, HasTheFormatNone) {
  const Bytes object = attestationObject({9, 8});
  EXPECT_EQ(std::string(object.begin(), object.end()), std::string("\xa3\x63"
                                                                   "fmt"
                                                                   "\x64"
                                                                   "none"
                                                                   "\x67"
                                                                   "attStmt"
                                                                   "\xa0\x68"
                                                                   "authData"
                                                                   "\x42\x09\x08"));
  constexpr std::size_t kBeginning = 28;
  EXPECT_EQ(attestationObject(Bytes(200))[kBeginning], 0x58);
  EXPECT_THAT(attestationObject(Bytes(200)), SizeIs(kBeginning + 2 + 200));
  EXPECT_THAT(attestationObject(Bytes(300)), SizeIs(kBeginning + 3 + 300));
}

TEST(AttestationTest, LosesTheModelOfTheKey) {
  Bytes data = sequence(60);
  data[32] = 0x41;
  const Bytes cleared = withoutAaguid(data);
  EXPECT_EQ(Bytes(cleared.begin() + 37, cleared.begin() + 53), Bytes(16));
  EXPECT_EQ(cleared[36], data[36]);
  EXPECT_EQ(cleared[53], data[53]);
  data[32] = 0x01;  // no credential
  EXPECT_EQ(withoutAaguid(data), data);
  data.resize(52);
  data[32] = 0x41;
  EXPECT_EQ(withoutAaguid(data), data);
}

TEST(AuthenticatorDataTest, IsForOneRelyingParty) {
  const Bytes hash = sha256("a.example");
  EXPECT_EQ(toBase64Url(sha256("abc")), "ungWv48Bz-pBQUDeXa4iI7ADYaOWF3qctBD_YfIAFa0");
  Bytes data = hash;
  data.insert(data.end(), {0x01, 0, 0, 0, 0});
  EXPECT_TRUE(isFor(hash, UserVerification::kPreferred, data));
  EXPECT_FALSE(isFor(hash, UserVerification::kRequired, data));
  EXPECT_FALSE(isFor(sha256("b.example"), UserVerification::kPreferred, data));
  data[32] = 0x05;
  EXPECT_TRUE(isFor(hash, UserVerification::kRequired, data));
  data[32] = 0x04;
  EXPECT_FALSE(isFor(hash, UserVerification::kRequired, data));
  EXPECT_FALSE(isFor(hash, UserVerification::kDiscouraged, data));
  EXPECT_FALSE(isFor(hash, UserVerification::kDiscouraged, Bytes(hash)));
  EXPECT_FALSE(isFor(hash, UserVerification::kDiscouraged, {}));
}

TEST(PublicKeyTest, HasTheFormOfACertificatesKey) {
  const Bytes p256 = publicKeyDer(kEs256, sequence(64)).value();
  EXPECT_THAT(p256, SizeIs(91));
  EXPECT_EQ(toBase64Url(p256).substr(0, 36), "MFkwEwYHKoZIzj0CAQYIKoZIzj0DAQcDQgAE");
  const Bytes ed25519 = publicKeyDer(kEdDsa, sequence(32)).value();
  EXPECT_THAT(ed25519, SizeIs(44));
  EXPECT_EQ(toBase64Url(ed25519).substr(0, 16), "MCowBQYDK2VwAyEA");
  Bytes numbers = sequence(256, 0x80);
  numbers.insert(numbers.end(), {1, 0, 1});
  const Bytes rsa = publicKeyDer(kRs256, numbers).value();
  EXPECT_THAT(rsa, SizeIs(294));
  EXPECT_EQ(toBase64Url(rsa).substr(0, 44), "MIIBIjANBgkqhkiG9w0BAQEFAAOCAQ8AMIIBCgKCAQEA");
}

TEST(PublicKeyTest, OfAnotherLengthOrAlgorithmHasNone) {
  EXPECT_EQ(publicKeyDer(kEs256, sequence(63)), std::nullopt);
  EXPECT_EQ(publicKeyDer(kEdDsa, {}), std::nullopt);
  EXPECT_EQ(publicKeyDer(kRs256, sequence(64)), std::nullopt);
  EXPECT_EQ(publicKeyDer(-35, sequence(64)), std::nullopt);
}

TEST(Base64UrlTest, HasNoPadding) {
  EXPECT_EQ(toBase64Url({}), "");
  EXPECT_EQ(toBase64Url({0xfb}), "-w");
  EXPECT_EQ(toBase64Url({0xfb, 0xff}), "-_8");
  EXPECT_EQ(toBase64Url({0xfb, 0xff, 0xfe}), "-__-");
  EXPECT_EQ(fromBase64Url(""), Bytes());
  EXPECT_EQ(fromBase64Url("-w"), Bytes({0xfb}));
  EXPECT_EQ(fromBase64Url("-__-"), Bytes({0xfb, 0xff, 0xfe}));
  for (const char* const text : {"A", "AAAAA", "AA==", "+w", "a/", "A A", "\xc3\xa9"})
    EXPECT_EQ(fromBase64Url(text), std::nullopt) << text;
}

}  // namespace
