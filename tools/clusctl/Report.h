// What a command has to say, as one JSON document; the readable form is made from that same document.
#ifndef CLUSCTL_REPORT_H
#define CLUSCTL_REPORT_H

#include "Failure.h"
#include "Json.h"

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
    void AddRecord(const char* key, Json record, const Columns& columns);

    // A list of records: a table with a header line, or `whenEmpty` when there is none.
    void AddTable(const char* key, Json records, const Columns& columns, const std::string& whenEmpty);

    // A list of records that are too wide for a table: one block of lines each.
    void AddRecords(const char* key, Json records, const Columns& columns, const std::string& whenEmpty);

    // A value that reads best as a sentence.
    void AddSentence(const char* key, Json value, const std::string& sentence);

    // A value that only the JSON form shows.
    void AddMember(const char* key, Json value);
    bool Has(const char* key) const {
        return m_document.contains(key);
    }

    // A document that is printed as it is, in both forms, with the warnings of another report.
    static Report Verbatim(Json document, const Report& warned);

    // Of a command that printed what there is to show as it came, and ends with this code.
    static Report Printed(ExitCode code) {
        Report report;
        report.m_isPrinted = true;
        report.m_exitCode = code;
        return report;
    }
    bool IsPrinted() const {
        return m_isPrinted;
    }

    // What the reader has to know besides: shown on standard error, and in JSON as "warnings".
    void AddWarning(const std::string& warning);

    // Something that belongs to the answer is not in it: the warning says what. The answer is shown all the same, and
    // the command ends with ExitIncomplete.
    void MarkIncomplete(const std::string& warning);

    // What is not in it could not be read because the cluster was lost: the command fails, and shows it all the same.
    void MarkLost(unsigned long code) {
        m_lostCode = code;
    }
    bool IsLost() const {
        return m_lostCode != 0;
    }
    // The Win32 code of the call that found it lost; 0 when it was not.
    unsigned long LostCode() const {
        return m_lostCode;
    }

    // The command has done its work, and ends with this code all the same.
    void EndWith(ExitCode code) {
        m_exitCode = code;
    }
    // ExitIncomplete when something is missing.
    ExitCode Code() const {
        return m_isComplete ? m_exitCode : ExitIncomplete;
    }

    const std::vector<std::string>& Warnings() const {
        return m_warnings;
    }
    bool IsComplete() const {
        return m_isComplete;
    }

    std::string ToText() const;

    // The document with "complete", "warnings" and the members of `besides`. Nothing at all is no complete answer. Uses
    // the report up: a document may be large.
    std::string ToJson(const Json& besides) &&;

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

    void Add(Form form, const char* key, Json value, const Columns& columns, const std::string& sentence);

    Json m_document = Json::object();
    std::vector<Section> m_sections;
    std::vector<std::string> m_warnings;
    ExitCode m_exitCode = ExitDone;
    bool m_isComplete = true;
    bool m_isVerbatim = false;
    bool m_isPrinted = false;
    unsigned long m_lostCode = 0;
};

// The work failed halfway; what there is to show of it is printed like a result.
class FailureWithReport : public Failure {
public:
    FailureWithReport(const Failure& failure, const Report& report) : Failure(failure), m_report(report) {
    }
    const Report& Shown() const {
        return m_report;
    }

private:
    Report m_report;
};

#endif
