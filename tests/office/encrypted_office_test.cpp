#include "tests/office/loopback.h"
#include "tests/office/office_fixture.h"
#include "tests/office/office_process.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>

#include <boost/asio/buffer.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/ssl.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/ssl.hpp>
#include <boost/beast/websocket.hpp>
#include <boost/beast/websocket/ssl.hpp>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

namespace zelkovanta::office {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace ssl = boost::asio::ssl;
using asio::ip::tcp;
using testing::HasSubstr;

/// A certificate of 127.0.0.1 that is its own authority, and its key.
void makeCertificate(const std::filesystem::path& chain, const std::filesystem::path& keyFile) {
    const std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key(EVP_EC_gen("P-256"), &EVP_PKEY_free);
    const std::unique_ptr<X509, decltype(&X509_free)> made(X509_new(), &X509_free);
    X509* certificate = made.get();
    X509_set_version(certificate, 2);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate), 1);
    X509_gmtime_adj(X509_getm_notBefore(certificate), -3600);
    X509_gmtime_adj(X509_getm_notAfter(certificate), 24L * 3600);
    X509_set_pubkey(certificate, key.get());
    const std::string name = "Local office";
    std::vector<unsigned char> bytes(name.begin(), name.end());
    X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate), "CN", MBSTRING_UTF8, bytes.data(),
                               static_cast<int>(bytes.size()), -1, 0);
    X509_set_issuer_name(certificate, X509_get_subject_name(certificate));
    for (const auto& [kind, value] :
         {std::pair{NID_subject_alt_name, "IP:127.0.0.1"}, std::pair{NID_basic_constraints, "critical,CA:TRUE"}}) {
        X509_EXTENSION* extension = X509V3_EXT_conf_nid(nullptr, nullptr, kind, value);
        X509_add_ext(certificate, extension, -1);
        X509_EXTENSION_free(extension);
    }
    ASSERT_GT(X509_sign(certificate, key.get(), EVP_sha256()), 0);

    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> chainOut(std::fopen(chain.c_str(), "w"), &std::fclose);
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> keyOut(std::fopen(keyFile.c_str(), "w"), &std::fclose);
    ASSERT_EQ(PEM_write_X509(chainOut.get(), certificate), 1);
    ASSERT_EQ(PEM_write_PrivateKey(keyOut.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr), 1);
}

class EncryptedOfficeTest : public testing::Test {
protected:
    EncryptedOfficeTest() {
        trust.load_verify_file((office.database().parent_path() / "chain.pem").string());
        trust.set_verify_mode(ssl::verify_peer);
    }

    ssl::stream<tcp::socket> connected() {
        ssl::stream<tcp::socket> stream(context, trust);
        stream.set_verify_callback(ssl::host_name_verification("127.0.0.1"));
        stream.next_layer().connect({asio::ip::address_v4::loopback(), office.port()});
        stream.handshake(ssl::stream_base::client);
        return stream;
    }

    OfficeProcess office{[](const std::filesystem::path& folder) {
        makeCertificate(folder / "chain.pem", folder / "key.pem");
        return std::vector<std::string>{"--sample",           "harbour", "--certificate",
                                        folder / "chain.pem", "--key",   folder / "key.pem"};
    }};
    asio::io_context context;
    ssl::context trust{ssl::context::tls_client};
};

TEST_F(EncryptedOfficeTest, answersWhoeverTrustsItsCertificate) {
    auto stream = connected();
    const std::string request = "GET /api/v1/state HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n\r\n";
    asio::write(stream, asio::buffer(request));
    std::string answer;
    boost::system::error_code error;
    asio::read(stream, asio::dynamic_buffer(answer), error);
    EXPECT_THAT(answer, testing::StartsWith("HTTP/1.1 401"));
    EXPECT_EQ(error, asio::error::eof) << "the end is said, not just cut off: " << error.message();
}

TEST_F(EncryptedOfficeTest, closesAnUnencryptedVisitorWithoutAWord) {
    RawConnection plain(office.port());
    plain.send("GET /api/v1/state HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
    EXPECT_EQ(plain.readAll().find("HTTP/"), std::string::npos);
    EXPECT_NO_THROW(connected()) << "and goes on";
}

/// A host whose OpenSSL refuses no version of TLS by itself, for the programs that are started there.
class LenientHost {
public:
    LenientHost() { ::setenv("OPENSSL_CONF", ZELKOVANTA_LENIENT_OPENSSL, 1); }
    ~LenientHost() { ::unsetenv("OPENSSL_CONF"); }
    LenientHost(const LenientHost&) = delete;
    LenientHost& operator=(const LenientHost&) = delete;
};

class OfficeOnALenientHost : LenientHost, public EncryptedOfficeTest {};

TEST_F(OfficeOnALenientHost, speaksNothingOlderThanTls12) {
    const auto refusal = [this](int version) {
        ssl::context client(ssl::context::tls_client);
        SSL_CTX_set_min_proto_version(client.native_handle(), version);
        SSL_CTX_set_max_proto_version(client.native_handle(), version);
        SSL_CTX_set_cipher_list(client.native_handle(), "ALL:@SECLEVEL=0");
        ssl::stream<tcp::socket> stream(context, client);
        stream.next_layer().connect({asio::ip::address_v4::loopback(), office.port()});
        boost::system::error_code error;
        stream.handshake(ssl::stream_base::client, error);
        return error ? error.message() : std::string{};
    };
    // The words of an alert that came from the office.
    EXPECT_THAT(refusal(TLS1_VERSION), HasSubstr("alert protocol version"));
    EXPECT_THAT(refusal(TLS1_1_VERSION), HasSubstr("alert protocol version"));
    EXPECT_EQ(refusal(TLS1_2_VERSION), "");
    EXPECT_EQ(refusal(TLS1_3_VERSION), "");
}

TEST_F(EncryptedOfficeTest, obeysTheCommandLineThatKnowsItsCertificate) {
    EXPECT_THAT(office.command({"state"}), HasSubstr("Harbour Dental"));
    const std::filesystem::path address = office.database().string() + ".address";
    std::ifstream before(address);
    std::string url;
    std::getline(before, url);
    EXPECT_EQ(url, "https://127.0.0.1:" + std::to_string(office.port()));
    std::ofstream(address) << url << "\n" << std::string(64, '0') << "\n";
    EXPECT_THROW(office.command({"state"}), std::runtime_error) << "another certificate than the one that was noted";
    std::ofstream(address) << url << "\n";
    EXPECT_THROW(office.command({"state"}), std::runtime_error) << "no authority of this host knows it";
}

TEST_F(EncryptedOfficeTest, keepsRealTimeConnectionsToTheirEnd) {
    const std::string code = office.command({"code", "--role", "shared"});
    const std::string body =
        R"({"device":{"kind":"desktop_mac","name":"Pamir","model":"M","appVersion":"1"},"code":")" + code + "\"}";
    auto asking = connected();
    asio::write(asking, asio::buffer("POST /api/v1/pair/redeem HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Length: " +
                                     std::to_string(body.size()) + "\r\n\r\n" + body));
    beast::flat_buffer bytes;
    beast::http::response<beast::http::string_body> answer;
    beast::http::read(asking, bytes, answer);
    const json::value paired = json::parse(answer.body());

    beast::websocket::stream<ssl::stream<tcp::socket>> socket(connected());
    socket.set_option(beast::websocket::stream_base::decorator(
        [token = at(paired, "deviceToken")](beast::websocket::request_type& request) {
            request.set(beast::http::field::authorization, "Bearer " + token);
        }));
    socket.handshake("127.0.0.1", "/api/v1/ws");
    beast::flat_buffer frame;
    socket.read(frame);
    EXPECT_THAT(beast::buffers_to_string(frame.cdata()), HasSubstr("\"snapshot\""));
    office.command({"revoke", at(paired, "device.id")});
    boost::system::error_code error;
    frame.clear();
    socket.read(frame, error);
    EXPECT_EQ(error, beast::websocket::error::closed) << error.message();
    EXPECT_EQ(socket.reason().code, 4001);
}

TEST(EncryptedOffice, saysWhyItCannotStart) {
    const support::TemporaryFolder folder;
    const std::string chain = folder.path() / "chain.pem";
    const std::string key = folder.path() / "key.pem";
    const std::string otherKey = folder.path() / "other.pem";
    makeCertificate(chain, otherKey);
    makeCertificate(chain, key);
    const auto refusal = [&](const std::string& certificate, const std::string& withKey) {
        return OfficeProcess::refusalOf({"serve", "--database", folder.path() / "office.db", "--port", "0",
                                         "--certificate", certificate, "--key", withKey})
            .sentence;
    };
    EXPECT_THAT(refusal(folder.path() / "none.pem", key), HasSubstr("cannot be read"));
    EXPECT_THAT(refusal(key, key), HasSubstr("cannot be read"));
    EXPECT_THAT(refusal(chain, folder.path() / "none.pem"), HasSubstr("cannot be used with the certificate"));
    EXPECT_THAT(refusal(chain, otherKey), HasSubstr("cannot be used with the certificate"));
    EXPECT_THAT(
        OfficeProcess::refusalOf({"serve", "--database", folder.path() / "office.db", "--certificate", chain}).sentence,
        HasSubstr("go together"));
}

}  // namespace
}  // namespace zelkovanta::office
