#pragma once

#include <boost/phoenix/bind.hpp>
#include <boost/spirit/include/qi.hpp>

#include "reader/ExtractaViewData.h"
#include "reader/inside/FieldParser.h"

namespace velextracta {

/// The syntax of a view file: a header record "A!", a J record "J!", then S records "S!", each a
/// list of fields with "!" between them, ended by CR LF. Every byte counts; a lone CR or LF is
/// part of a field. What a handler has stored stays stored when the parse fails behind it.
template <typename Iterator>
class ExtractaViewGrammar final : public boost::spirit::qi::grammar<Iterator> {
public:
    /// The grammar fills the table and must not outlive it.
    explicit ExtractaViewGrammar(ExtractaViewData& table)
        : ExtractaViewGrammar::base_type(start, "view file"), data(&table) {
        namespace phoenix = boost::phoenix;  // a bare bind would find the standard one as well
        using boost::spirit::qi::_1;
        using boost::spirit::qi::lit;
        using Grammar = ExtractaViewGrammar;
        using Data = ExtractaViewData;

        // Left to itself the list parser would gather the records in a vector.
        const boost::spirit::qi::as<Data::Records> recordList;

        fieldList = (fieldText % lit('!')) >> *lit("\r\n");

        start = lit("A!") >> fieldList[phoenix::bind(&Grammar::onHeader, this, _1)] >> lit("J!") >>
                fieldList[phoenix::bind(&Data::setJRecord, data, _1)] >>
                recordList[*(lit("S!") >> fieldList)][phoenix::bind(&Data::setSRecords, data, _1)];
    }

private:
    void onHeader(const FieldList& names) { data->addColumns(names); }

    boost::spirit::qi::rule<Iterator> start;
    boost::spirit::qi::rule<Iterator, FieldList()> fieldList;
    ExtractaViewData* data;
};

}  // namespace velextracta
