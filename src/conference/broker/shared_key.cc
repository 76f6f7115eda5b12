#include "conference/broker/shared_key.h"

#include <charconv>
#include <cstring>
#include <openssl/ssl.h>

namespace {

// For TLS 1.2; in TLS 1.3 the key goes with every cipher, and a server that
// answers without it needs a certificate.
constexpr const char* CIPHERS = "kECDHEPSK:kDHEPSK:kPSK:!eNULL";

unsigned put_key(std::string_view digits, unsigned char* key, unsigned room)
{
    const size_t size = digits.size() / 2;
    if (size > room || digits.size() % 2 != 0)
        return 0;
    for (size_t i = 0; i < size; ++i)
        std::from_chars(&digits[2 * i], &digits[2 * i] + 2, key[i], 16);
    return static_cast<unsigned>(size);
}

unsigned give_key(SSL* connection, const char* /*hint*/, char* identity, unsigned identity_room,
    unsigned char* key, unsigned key_room)
{
    const auto* url
        = static_cast<const QD_Broker_Url*>(SSL_CTX_get_app_data(SSL_get_SSL_CTX(connection)));
    if (url->user.size() >= identity_room)
        return 0;
    memcpy(identity, url->user.c_str(), url->user.size() + 1);
    return put_key(url->password, key, key_room);
}

}

void QD_Release_Tls::operator()(ssl_ctx_st* context) const { SSL_CTX_free(context); }

std::unique_ptr<ssl_ctx_st, QD_Release_Tls> qd_shared_key_tls(const QD_Broker_Url& url)
{
    std::unique_ptr<ssl_ctx_st, QD_Release_Tls> made(SSL_CTX_new(TLS_client_method()));
    if (made == nullptr || SSL_CTX_set_min_proto_version(made.get(), TLS1_2_VERSION) != 1
        || SSL_CTX_set_cipher_list(made.get(), CIPHERS) != 1
        || SSL_CTX_set_app_data(made.get(), const_cast<QD_Broker_Url*>(&url)) != 1)
        return nullptr;
    SSL_CTX_set_psk_client_callback(made.get(), give_key);
    SSL_CTX_set_verify(made.get(), SSL_VERIFY_PEER, nullptr);
    return made;
}
