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
/// Every view file is parsed by this grammar in one go: a text in memory by the iterator of a text,
/// a file of any size by ViewIterator, which reads on as the grammar gets on. Only the receivers
/// differ in what they keep. What one has taken stays taken when the parse fails behind it.
template <typename Iterator>
class ExtractaViewGrammar final : public boost::spirit::qi::grammar<Iterator> {
public:
    /// The grammar fills the receiver and must not outlive it.
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
