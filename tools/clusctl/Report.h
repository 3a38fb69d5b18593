// What a command has to say, as one JSON document; the readable form is made from that same document.
#ifndef CLUSCTL_REPORT_H
#define CLUSCTL_REPORT_H

#include "Json.h"

#include <stdexcept>
#include <string>
#include <vector>

// A member of a record and its title in the readable form.
struct Column {
    const char* key;
    const char* title;
};

typedef std::vector<Column> Columns;

class Report {
public:
    // One record: a line "title: value" per column. Columns that the record lacks are left out.
    void AddRecord(const char* key, const Json& record, const Columns& columns);

    // A list of records: a table with a header line, or `whenEmpty` when there is none.
    void AddTable(const char* key, const Json& records, const Columns& columns, const std::string& whenEmpty);

    // A list of records that are too wide for a table: one block of lines each.
    void AddRecords(const char* key, const Json& records, const Columns& columns, const std::string& whenEmpty);

    // A value that reads best as a sentence.
    void AddSentence(const char* key, const Json& value, const std::string& sentence);

    // A document that is printed as it is, in both forms.
    static Report Verbatim(const Json& document);

    std::string ToText() const;
    std::string ToJson() const;

private:
    enum class Form {
        Record,
        Table,
        Records,
        Sentence
    };

    struct Section {
        Form form;
        std::string key;
        Columns columns;
        std::string sentence; // Table, Records: when there is none
    };

    void Add(Form form, const char* key, const Json& value, const Columns& columns, const std::string& sentence);

    Json m_document = Json::object();
    std::vector<Section> m_sections;
    bool m_isVerbatim = false;
};

// A command could not do its work; what() is the sentence for the user. main adds the library's own reasons.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The work failed halfway; what there is to show of it is printed like a result.
class FailureWithReport : public Failure {
public:
    FailureWithReport(const std::string& what, const Report& report) : Failure(what), m_report(report) {
    }
    const Report& Shown() const {
        return m_report;
    }

private:
    Report m_report;
};

#endif
