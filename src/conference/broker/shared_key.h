// TLS with a broker that is known by a key, and not by a certificate.
#pragma once

#include "conference/broker/broker_url.h"

#include <memory>

struct ssl_ctx_st; // the TLS library's settings of connections

struct QD_Release_Tls {
    void operator()(ssl_ctx_st* context) const;
};

/// Settings by which a connection comes about only with a peer that has the
/// URL's key, too: no cipher without it is offered, and no certificate is
/// trusted. Keys of a connection are lost with it where the peer can do that.
/// Null if the library refuses. The URL outlives all connections.
std::unique_ptr<ssl_ctx_st, QD_Release_Tls> qd_shared_key_tls(const QD_Broker_Url& url);
