#pragma once
// Socket tuning that QWebSocket has no setter for.

class QObject;
class QWebSocket;

// Turns off Nagle's algorithm on the TCP connection under `socket`, a socket that `listener`
// (its QWebSocketServer) handed out. Answers whether the option could be set. Main thread (the
// socket's thread) only.
bool set_low_delay(QWebSocket* socket, const QObject* listener);
