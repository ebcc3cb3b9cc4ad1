#pragma once
// Classifies one received text frame. One parser per text; never throws on bad input.
//
// What the parser answers, for each kind of text:
//   empty or only whitespace          -> is_empty
//   not JSON at all                   -> has_errors, error() is -32700 Parse error, id null
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

class JsonRPCParser {
public:
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
