#pragma once

#include <cstddef>
#include <iterator>
#include <string_view>
#include <type_traits>

#include <boost/spirit/include/qi.hpp>

#include "reader/inside/FieldList.h"

namespace velextracta {

/// The length of the text's first field; that of the whole text if the field does not end in it.
inline std::size_t fieldLength(std::string_view text) {
    if (text.starts_with("\r\n")) {
        return 0;  // the end of a record; the next ! belongs to another one
    }
    text = text.substr(0, text.find('!'));
    return text.substr(0, text.find("\r\n")).size();
}

/// The field at a place of a text in memory.
template <std::contiguous_iterator Iterator>
std::string_view fieldAt(Iterator place, Iterator end) {
    const std::string_view text(place, end);
    return text.substr(0, fieldLength(text));
}

/// The terminal `fieldText` of the view file grammar: *((char_ - "\r\n") - '!') in one step. A
/// search for the end of a field is several times faster than a test at each byte. Its attribute is
/// a view of the parsed text.
BOOST_SPIRIT_TERMINAL(fieldText)

struct FieldParser : boost::spirit::qi::primitive_parser<FieldParser> {
    template <typename Context, typename Iterator>
    struct attribute {
        using type = std::string_view;
    };

    /// Always succeeds: a field may be empty.
    template <typename Iterator, typename Context, typename Skipper, typename Attribute>
    bool parse(Iterator& first, const Iterator& last, Context&, const Skipper&,
               Attribute& result) const {
        const std::string_view text = fieldAt(first, last);
        first += static_cast<std::iter_difference_t<Iterator>>(text.size());
        if constexpr (!std::is_same_v<Attribute, const boost::spirit::unused_type>) {
            result = text;
        }
        return true;
    }

    template <typename Context>
    boost::spirit::info what(Context&) const {
        return boost::spirit::info("field text");
    }
};

}  // namespace velextracta

namespace boost::spirit {

template <>
struct use_terminal<qi::domain, velextracta::tag::fieldText> : mpl::true_ {};

namespace qi {

template <typename Modifiers>
struct make_primitive<velextracta::tag::fieldText, Modifiers> {
    using result_type = velextracta::FieldParser;
    result_type operator()(unused_type, unused_type) const { return {}; }
};

}  // namespace qi

// Appends a view of each text to the list, which keeps texts packed: no string in between.
namespace traits {

template <>
struct push_back_container<velextracta::FieldList, std::string_view> {
    static bool call(velextracta::FieldList& fields, std::string_view text) {
        fields.push_back(text);
        return true;
    }
};

}  // namespace traits
}  // namespace boost::spirit
