#pragma once

#include <boost/phoenix/bind.hpp>
#include <boost/spirit/include/qi.hpp>

#include "reader/ViewReceiver.h"
#include "reader/inside/FieldParser.h"

namespace velextracta {

/// The syntax of a view file: a header record "A!", a J record "J!", then S records "S!", each a
/// list of fields with "!" between them, ended by CR LF. Every byte counts; a lone CR or LF is
/// part of a field.
///
/// This grammar parses every view file in one pass: a text in memory with a pointer as iterator, a
/// file of any size with ViewIterator, which reads while the grammar advances. If the parse fails,
/// the receiver keeps what it has received.
template <typename Iterator>
class ExtractaViewGrammar final : public boost::spirit::qi::grammar<Iterator> {
public:
    /// Fills the receiver, which must outlive the grammar.
    explicit ExtractaViewGrammar(ViewReceiver& viewReceiver)
        : ExtractaViewGrammar::base_type(start, "view file"), receiver(&viewReceiver) {
        using boost::phoenix::bind;
        using boost::spirit::qi::_1;
        using boost::spirit::qi::eps;
        using boost::spirit::qi::lit;
        using Receiver = ViewReceiver;

        fieldList = (fieldText % lit('!')) >> *lit("\r\n");

        start = lit("A!") >> fieldList[bind(&ExtractaViewGrammar::onHeader, this, _1)] >>
                lit("J!") >> fieldList[bind(&Receiver::setJRecord, receiver, _1)] >>
                *(lit("S!") >> fieldList[bind(&Receiver::addSRecord, receiver, _1)]) >>
                eps[bind(&Receiver::endSRecords, receiver)];
    }

private:
    void onHeader(const FieldList& names) { receiver->addColumns(names); }

    boost::spirit::qi::rule<Iterator> start;
    boost::spirit::qi::rule<Iterator, FieldList()> fieldList;
    ViewReceiver* receiver;
};

}  // namespace velextracta
