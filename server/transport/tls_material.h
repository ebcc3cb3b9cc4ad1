#pragma once
// The built-in TLS identity of the listener: a self-signed certificate for "localhost" and its
// unencrypted PKCS#8 RSA key, both PEM. The same pair serves every run and every installation;
// clients are expected not to verify it (the listener only ever binds the loopback address).
// Both objects are initialised before main() and never change, so any thread may read them.

#include <QByteArray>

extern const QByteArray tls_certificate_pem;
extern const QByteArray tls_private_key_pem;
