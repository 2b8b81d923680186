#include "app/gtk/Tickets.h"

#include <gtest/gtest.h>
#include <krb5/krb5.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include "tests/support/Environment.h"
#include "tests/support/Files.h"

namespace {

using Servers = std::vector<std::string>;

constexpr std::time_t kHour = 3600;
constexpr char kServer[] = "https://sso.example.test:443";

class TicketsTest : public testing::Test {
 protected:
  TicketsTest() { configure(""); }

  void configure(const std::string& domains) {
    support::writeFile(folder_ / "krb5.conf",
                       "[libdefaults]\n default_realm = EXAMPLE.TEST\n[domain_realm]\n" + domains);
  }

  // Stores a ticket-granting ticket without a key, which is enough to be found.
  void storeTicket(std::time_t end, const char* realm = "EXAMPLE.TEST") const {
    krb5_context context = nullptr;
    krb5_ccache cache = nullptr;
    krb5_creds ticket{};
    ASSERT_EQ(krb5_init_context(&context), 0);
    ASSERT_EQ(krb5_cc_resolve(context, ("FILE:" + cacheFile).c_str(), &cache), 0);
    ASSERT_EQ(krb5_parse_name(context, (std::string("ada@") + realm).c_str(), &ticket.client), 0);
    ASSERT_EQ(krb5_parse_name(context, (std::string("krbtgt/") + realm + "@" + realm).c_str(), &ticket.server), 0);
    ticket.times.endtime = static_cast<krb5_timestamp>(end);
    ASSERT_EQ(krb5_cc_initialize(context, cache, ticket.client), 0);
    ASSERT_EQ(krb5_cc_store_cred(context, cache, &ticket), 0);
    krb5_free_cred_contents(context, &ticket);
    krb5_cc_close(context, cache);
    krb5_free_context(context);
  }

  void storeValidTicket(const char* realm = "EXAMPLE.TEST") const { storeTicket(std::time(nullptr) + kHour, realm); }

  static Servers serversFor(const std::string& page) { return serversForTickets({page}); }

 private:
  const support::TemporaryFolder folder_;

 protected:
  const std::string cacheFile = folder_ / "tickets";

 private:
  const support::Variable config_{"KRB5_CONFIG", folder_ / "krb5.conf"};
  const support::Variable cache_{"KRB5CCNAME", "FILE:" + cacheFile};
};

struct Case {
  const char* name;
  const char* page;
  Servers servers;
};

void PrintTo(const Case& each, std::ostream* out) {
  *out << each.page;
}

class PageAddressTest : public TicketsTest, public testing::WithParamInterface<Case> {};

TEST_P(PageAddressTest, GetsTicketsOnlyInTheRealm) {
  configure(" .mapped.invalid = EXAMPLE.TEST\n 0.invalid = EXAMPLE.TEST\n .dmz.example.test = OTHER.TEST\n");
  storeValidTicket();
  Servers expected = GetParam().servers;
  expected.insert(expected.begin(), "https://0.invalid:443");
  EXPECT_EQ(serversFor(GetParam().page), expected);
}

INSTANTIATE_TEST_SUITE_P(
    Pages, PageAddressTest,
    testing::Values(Case{"Below", "https://sso.example.test/start", {kServer}},
                    Case{"Itself", "https://example.test/", {"https://example.test:443"}},
                    Case{"Port", "https://sso.example.test:8443/", {"https://sso.example.test:8443"}},
                    Case{"UpperCase", "HTTPS://SSO.Example.Test/", {kServer}},
                    Case{"MappedDomain", "https://a.b.mapped.invalid/", {"https://a.b.mapped.invalid:443"}},
                    Case{"Unencrypted", "http://sso.example.test/", {}},
                    Case{"EndsLikeTheRealm", "https://evilexample.test/", {}},
                    Case{"BeginsLikeTheRealm", "https://example.test.invalid/", {}},
                    Case{"UserInfo", "https://sso.example.test@evil.invalid/", {}},
                    Case{"Comma", "https://sso.example.test,https%3a//evil.invalid/", {}},
                    Case{"FinalDot", "https://evil.invalid./", {}},
                    Case{"OtherRealm", "https://x.dmz.example.test/", {}}, Case{"NoHost", "https:///", {}},
                    Case{"Address", "https://127.0.0.1/", {}}, Case{"NotAnAddress", "", {}}),
    [](const auto& each) { return each.param.name; });

TEST_F(TicketsTest, NoCacheMeansNoServer) {
  EXPECT_EQ(serversFor(kServer), Servers());
}

TEST_F(TicketsTest, AnExpiredTicketDoesNotCount) {
  storeTicket(std::time(nullptr) - kHour);
  EXPECT_EQ(serversFor(kServer), Servers());
}

TEST_F(TicketsTest, ARealmOfOneLabelIsNoDomain) {
  storeValidTicket("TEST");
  EXPECT_EQ(serversFor(kServer), Servers());
}

TEST_F(TicketsTest, AListedDomainIsNoServer) {
  configure(" .example.org = EXAMPLE.TEST\n label = EXAMPLE.TEST\n other.example.org = OTHER.TEST\n");
  storeValidTicket();
  EXPECT_EQ(serversFor(""), Servers());
}

TEST_F(TicketsTest, AServerBehindAProxyIsLeftOut) {
  const support::Variable proxy("https_proxy", "http://proxy.example.test:3128");
  const support::Variable direct("no_proxy", "direct.example.test");
  storeValidTicket();
  EXPECT_EQ(serversForTickets({kServer, "https://direct.example.test/"}), Servers{"https://direct.example.test:443"});
}

TEST_F(TicketsTest, ACacheOfAnotherUserDoesNotCount) {
  if (::geteuid() != 0) GTEST_SKIP() << "not the super-user";
  storeValidTicket();
  ASSERT_EQ(::chown(cacheFile.c_str(), 12345, 12345), 0);
  EXPECT_EQ(serversFor(kServer), Servers());
}

TEST_F(TicketsTest, ALinkOfAnotherUserDoesNotCount) {
  if (::geteuid() != 0) GTEST_SKIP() << "not the super-user";
  storeValidTicket();
  std::filesystem::rename(cacheFile, cacheFile + ".own");
  std::filesystem::create_symlink(cacheFile + ".own", cacheFile);
  EXPECT_EQ(serversFor(kServer), Servers{kServer});
  ASSERT_EQ(::lchown(cacheFile.c_str(), 12345, 12345), 0);
  EXPECT_EQ(serversFor(kServer), Servers());
}

TEST_F(TicketsTest, APipeInPlaceOfTheCacheDoesNotBlock) {
  ASSERT_EQ(::mkfifo(cacheFile.c_str(), 0600), 0);
  EXPECT_EQ(serversFor(kServer), Servers());
}

TEST_F(TicketsTest, TheEnvironmentNamesTheServersAndNoOther) {
  const support::Variable trusted("SOUP_GSSAPI_TRUSTED_URIS", "https://evil.invalid");
  const support::Variable blocked("SOUP_GSSAPI_BLOCKLISTED_URIS", kServer);
  const support::Variable mechanisms("GSS_MECH_CONFIG", "/tmp/mechanisms");
  permitTickets({kServer, "https://b.example.test:8443"});
  EXPECT_EQ(std::getenv("SOUP_GSSAPI_TRUSTED_URIS"), std::string(kServer) + ",https://b.example.test:8443");
  EXPECT_EQ(std::getenv("SOUP_GSSAPI_BLOCKLISTED_URIS"), nullptr);
  EXPECT_STREQ(std::getenv("GSS_MECH_CONFIG"), "/dev/null");
}

}  // namespace
