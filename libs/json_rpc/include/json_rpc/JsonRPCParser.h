#pragma once
// Classifies one received text frame. One parser per text; never throws on bad input.
//
// What the parser answers, for each kind of text:
//   empty or only whitespace          -> is_empty
//   not JSON by RFC 8259              -> has_errors, error() is -32700 Parse error, id null, and
//                                        the place of the fault as the error's data. Stricter
//                                        than Qt: "1.", ".5", a leading byte-order mark, raw
//                                        control characters in strings and unknown escapes are
//                                        all refused.
//   a number too small for a double   -> read as 0 (1e-400 is 0), as a double would round it
//   a number too large for a double   -> has_errors, -32600 Invalid Request, id null, with the
//                                        number named in the data: 1e999 has no value to work
//                                        with, and rounding it to the largest double would
//                                        change what the client meant in silence
//   an array of more than kMaxBatchElements elements
//                                     -> has_errors, -32000 Limit exceeded, id null, with the
//                                        limit in the data; the rest of the text is not read
//   JSON that is neither object nor array, or an empty array
//                                     -> has_errors, error() is -32600 Invalid Request, id null
//   an object that is a valid request -> is_request, request()
//   an object that is a response      -> not is_request, response()
//   any other object                  -> has_errors, -32600 with the object's id where readable
//   a non-empty array                 -> is_batch; a batch of responses when every element is a
//                                        response, otherwise a batch of requests whose bad
//                                        elements appear in batch_errors() in text order
// Ids: strings, null and numbers are accepted. Qt keeps JSON numbers as doubles, so an integer id
// beyond +-(2^53 - 1) would come back altered; such a request is refused as Invalid Request
// with a null id instead of being answered under a wrong id.

#include "json_rpc/RPCObject.h"

#include <cstddef>

class JsonRPCParser {
public:
    // The most elements one batch may hold. Every element becomes a task, and the whole batch is
    // read and routed in one turn of the main thread, which serves every other client as well.
    static constexpr std::size_t kMaxBatchElements = 10000;

    JsonRPCParser() = default;

    void parse(const QString& text);

    bool is_empty() const { return empty; }
    bool is_batch() const { return batch; }
    bool is_request() const { return request_kind; }
    bool has_errors() const { return !single_error.is_empty(); }

    RPCResponse error() const { return single_error; }
    RPCRequest request() const { return single_request; }
    RPCResponse response() const { return single_response; }
    RPCBatchRequest batch_requests() const { return RPCBatchRequest(requests); }
    RPCBatchResponse batch_responses() const { return responses; }
    RPCBatchResponse batch_errors() const { return errors; }

private:
    bool used = false;
    bool empty = false;
    bool batch = false;
    bool request_kind = false;
    RPCResponse single_error;
    RPCRequest single_request;
    RPCResponse single_response;
    std::vector<RPCRequest> requests;
    RPCBatchResponse responses;
    RPCBatchResponse errors;
};
