#pragma once

// Boost.JSON's parser of events, under a name of our own: what it needs beside its templates is compiled into
// this library (json_grammar.cpp), and a host may link another Boost.JSON, of another version too. Nothing
// else may include that library's headers.
#define json vtdirect_json
#include <boost/json/basic_parser_impl.hpp>
#undef json

namespace lxservices::cms_interface::vantry {

namespace json_grammar = boost::vtdirect_json;

}  // namespace lxservices::cms_interface::vantry
