// The tool's error vocabulary and its process-wide switches: the error codes and
// their report, the exceptions the registry and the table handlers throw, and the
// switches the command line sets. Every layer above the framework may use these;
// this unit uses nothing above the framework.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "framework/VellTypes.h"

// ---- Process-wide switches, set by the command line ----
extern uint8_t gShowPostScriptNames;  // -p
extern uint8_t gShowUnicodeNames;     // -u
extern uint8_t gVerbose;              // -v
extern FILE* gReportFile;             // -o, or standard output
extern std::string gFontName;         // -f
extern uint8_t gSummaryOnly;          // --summary: the table lists without the tables' accounts
extern std::vector<VellTag> gAccountTables;   // --tables: the changed tables that get an account (all when empty)
extern std::vector<VellTag> gExcludedTables;  // --exclude-tables: the changed tables that get none
extern uint8_t gColorReport;          // --color, as decided for the report stream
extern uint8_t gExitCodeByDifference; // --exit-code: 0 identical, 1 different, 2 failure
extern uint8_t gOpenType;             // --opentype: the handlers of the OpenType handler set as well
extern uint8_t gPairFontsByIndex;     // --pair=index: the i-th font of each file, not fonts of one name
extern uint8_t gJsonOutput;           // --json: the report as JSON Lines records
extern std::string gHtmlPath;         // --html: the page drawn of the whole run (none when empty)
extern uint32_t gHtmlMaxDrawings;     // --html-max-drawings: drawings per table on that page

// Set once any compared pair differs (a table added, deleted or changed) or a
// font of the modified file has no partner: what --exit-code reports.
extern uint8_t gFontsDiffer;

// ---- Error codes and their report ----
enum VellCmpError : int32_t {
    kVellCmpInternalError = -1,
    kVellCmpMemoryError = -2,
    kVellCmpXLTError = -3,
    kVellCmpFileError = -4,
    kVellCmpResourceError = -5,
    kVellCmpFrameworkError = -6,
    kVellCmpAlreadyReported = -7,
    kVellCmpFontNotFound = -8,
};

// Replaces a (nonzero) framework code by the tool's code; never yields 0.
void MapFrameworkError(ErrorRecord* record);

// Prints a record's message, name and source place to standard error, then marks
// it reported (-7). Codes outside -6..-1 print nothing.
void ReportError(ErrorRecord* record);

// Under --json the report sets this, and every error and warning line written to
// standard error is also written as a record of that level ("error", "warning").
extern void (*gMessageRecordHook)(const char* level, const std::string& message, const std::string& detail);
// A "##### WARNING!" line on standard error (text is what follows the mark), and
// its record under --json.
void ReportWarning(const std::string& text);

// When a framework call left a code in the record: maps it, reports it and
// answers true; otherwise false.
bool ReportFrameworkError(ErrorRecord* record);

// The English message of a tool code, or null outside the table.
const char* VellCmpErrorMessage(int32_t code);

// Source places recorded in error records, as a report names them.
inline constexpr const char* kMainSource = "vellcmp/Source/main";
inline constexpr const char* kVellCmpFontsSource = "vellcmp/Source/VellCmpFonts";

// ---- Exceptions thrown by the registry and the table handlers ----
class TVellCmpException {
public:
    virtual ~TVellCmpException() = default;
};

class TVellCmpNULLException : public TVellCmpException {};

class TVellCmpOSException : public TVellCmpException {
public:
    explicit TVellCmpOSException(int32_t status) : fStatus(status) {}
    int32_t GetStatus() const { return fStatus; }

private:
    int32_t fStatus;
};

class TVellCmpVellException : public TVellCmpException {
public:
    explicit TVellCmpVellException(int32_t code) : fCode(code) {}
    explicit TVellCmpVellException(const ErrorRecord& record) : fCode(record.code) {}
    int32_t GetCode() const { return fCode; }

private:
    int32_t fCode;
};

// Throws TVellCmpVellException when a framework call left a code in the record.
inline void ThrowIfVellError(const ErrorRecord& record) {
    if (record.code != 0) throw TVellCmpVellException(record);
}
