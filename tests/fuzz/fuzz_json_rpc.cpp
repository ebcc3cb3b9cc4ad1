// Fuzz target of JsonRPCParser: one input is one received text frame. Beyond crashes and
// sanitizer faults it checks what the server relies on when it answers:
//  - every error response the parser builds is JSON our own parser reads back as a response
//    (its data quotes the client's text, so the writer's escaping is under test);
//  - a request, response or batch that was accepted, once written by our writer, reads back as
//    the same kind of message and writes the same text again (the writer and the parser agree).

#include "json_rpc/JsonRPCParser.h"

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace {

enum class Kind { Empty, Error, Request, Response, RequestBatch, ResponseBatch };

Kind kind_of(const JsonRPCParser& parser) {
    if (parser.is_empty()) {
        return Kind::Empty;
    }
    if (parser.has_errors()) {
        return Kind::Error;
    }
    if (parser.is_batch()) {
        return parser.batch_requests().request_count() + parser.batch_errors().response_count() > 0
                   ? Kind::RequestBatch
                   : Kind::ResponseBatch;
    }
    return parser.is_request() ? Kind::Request : Kind::Response;
}

// The accepted message as our writer puts it on the wire; a request batch without its bad
// elements.
QByteArray written(const JsonRPCParser& parser, Kind kind) {
    switch (kind) {
    case Kind::Request:
        return parser.request().to_json_string();
    case Kind::Response:
        return parser.response().to_json_string();
    case Kind::RequestBatch:
        return parser.batch_requests().to_json_string();
    case Kind::ResponseBatch:
        return parser.batch_responses().to_json_string();
    default:
        return {};
    }
}

[[noreturn]] void fault(const char* what, const QByteArray& text) {
    std::fprintf(stderr, "fuzz_json_rpc: %s\n%.*s\n", what, static_cast<int>(text.size()),
                 text.constData());
    __builtin_trap();
}

void expect_response(const QByteArray& text, const char* what) {
    JsonRPCParser reread;
    reread.parse(QString::fromUtf8(text));
    if (kind_of(reread) != Kind::Response) {
        fault(what, text);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QString text =
        QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    JsonRPCParser parser;
    parser.parse(text);
    const Kind kind = kind_of(parser);

    if (kind == Kind::Error) {
        expect_response(parser.error().to_json_string(), "error response does not read back");
        return 0;
    }
    if (kind == Kind::RequestBatch) {
        const RPCBatchResponse errors = parser.batch_errors();
        for (const RPCResponse& error : errors.responses()) {
            expect_response(error.to_json_string(), "batch error does not read back");
        }
        // A batch of nothing but bad elements has no requests to write back.
        if (parser.batch_requests().request_count() == 0) {
            return 0;
        }
    }
    if (kind == Kind::Empty) {
        return 0;
    }

    const QByteArray first = written(parser, kind);
    JsonRPCParser second;
    second.parse(QString::fromUtf8(first));
    const Kind second_kind = kind_of(second);
    if (second_kind != kind) {
        fault("written message reads back as another kind", first);
    }
    const QByteArray again = written(second, second_kind);
    if (again != first) {
        fault("written message does not write back the same", first + "\n" + again);
    }
    return 0;
}
