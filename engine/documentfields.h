#pragma once

#include "documentrecords.h"

#include <climits>

// The attributes of every element of a document, in order. Each list is stated once and serves both
// the reader and the writer: `Fields` takes each attribute's name and the record's member, and
// either fills the one from the other or the other way round.
namespace DocumentFields {

template <class Fields>
void describe(Fields &f, InputRecord &input)
{
    InputOptions &o = input.options;
    f.choice("medium", o.medium, Medium::Clipboard);
    f.integer("id", input.id, INT_MIN);
    f.text("name", input.name);
    f.text("comment", input.comment);
    f.integer("ignored_rows", o.ignoredRows, 0);
    f.flag("header", o.header);
    f.flag("watching", o.watching);
    f.flag("json_arrays_as_rows", o.jsonArraysAsRows);
    f.flag("trim", o.trim);
    f.flag("simplify", o.simplify);
    f.flag("ignore_empty", o.ignoreEmptyRows);
    f.flag("ignore_empty_cols", o.ignoreEmptyColumns);
    f.flag("ignore_excel_hidden_cols", o.ignoreExcelHiddenColumns);
    f.flag("ignore_excel_hidden_rows", o.ignoreExcelHiddenRows);
    f.flag("show_meta", o.showMeta);
    f.text("meta_text", o.metaText);
    f.flag("schema_in_use", o.schemaInUse);
    f.list("schema_col_name", o.schemaColumnNames);
    f.list("schema_missing_value", o.schemaMissingValues);
    f.choice("schema_missing_cols", o.schemaMissing, SchemaMissing::Error);
    f.choice("schema_reorder_cols", o.schemaOrder, SchemaOrder::Error);
    f.choice("schema_extra_cols", o.schemaExtra, SchemaExtra::Error);
    f.text("path", o.path);
    f.choice("file_type", o.fileType, FileType::PlainText);
    f.text("alias", input.alias);
    f.choice("delimiter", o.delimiter, Delimiter::UnitSeparator, Delimiter::Comma);
    f.text("custom_delimiter", o.customDelimiter);
    f.choice("quote", o.quoting, InputQuoting::Unquoted);
    f.flag("ignore_repeated_delim", o.ignoreRepeatedDelimiter);
    f.flag("auto_fixed_widths", o.autoFixedWidths);
    f.numbers("fixed_widths", o.fixedWidths);
    f.textOrDefault("encoding", o.encoding);
    f.text("worksheet", o.worksheet);
    f.text("text", o.text);
    f.position("pos_v12", input.position);
    f.oldPosition("pos", input.position);
}

template <class Fields>
void describe(Fields &f, TransformRecord &transform)
{
    f.integer("id", transform.id, INT_MIN);
    f.text("name", transform.name);
    f.text("comment", transform.comment);
    f.position("pos_v12", transform.position);
    f.oldPosition("pos", transform.position);
}

template <class Fields>
void describe(Fields &f, StoredParameter &parameter)
{
    f.text("name", parameter.key);
    f.integer("type", parameter.type, INT_MIN);
    f.text("value", parameter.value);
    f.list("columns", parameter.columns);
}

template <class Fields>
void describe(Fields &f, OutputRecord &output)
{
    OutputOptions &o = output.options;
    f.integer("id", output.id, INT_MIN);
    f.choiceUnlessFirst("medium", o.medium, Medium::Clipboard);
    f.flag("single_or_multi", o.multiFile);
    f.text("multi_file_column", o.multiFileColumn);
    f.flag("multi_file_confirm", o.multiFileConfirm);
    f.text("name", output.name);
    f.text("comment", output.comment);
    f.position("pos_v12", output.position);
    f.oldPosition("pos", output.position);
    f.text("path", o.path);
    f.choice("file_type", o.fileType, FileType::PlainText);
    f.text("alias", output.alias);
    f.text("custom_delimiter", o.customDelimiter);
    f.choice("delimiter", o.delimiter, Delimiter::UnitSeparator, Delimiter::Comma);
    f.choice("line_endings", o.lineEnding, LineEnding::RecordSeparator);
    f.choice("quote", o.quoting, OutputQuoting::Never);
    f.integer("excel_output", o.excelOutput, 0, 1);
    f.flag("excel_use_style_template", o.excelUseStyleTemplate);
    f.text("excel_style_template_path", o.excelStyleTemplatePath);
    f.list("excel_manual_col_formats", o.excelManualColumnFormats);
    f.integer("json_types", o.jsonTypes, 0, 1);
    f.list("json_manual_col_types", o.jsonManualColumnTypes);
    f.textOrDefault("encoding", o.encoding);
    f.flag("bom", o.byteOrderMark);
    f.text("xml_above_root", o.xmlAboveRoot);
    f.text("xml_root", o.xmlRoot);
    f.text("xml_below_root", o.xmlBelowRoot);
    f.text("xml_row", o.xmlRow);
    f.flag("html_encode", o.htmlEncode);
    f.choice("enable_output", o.writeMode, WriteMode::New);
    f.flag("overwrite_sheet", o.overwriteSheet);
    f.text("worksheet", o.worksheet);
    f.flag("write_header", o.writeHeader);
    f.flag("write_header_first_append_only", o.headerOnlyIfEmpty);
    f.flag("remove_empty", o.removeEmpty);
    f.text("file_comment", o.fileComment);
}

template <class Fields>
void describe(Fields &f, NoteRecord &note)
{
    f.integer("id", note.id, INT_MIN);
    f.text("comment", note.comment);
    f.position("pos_v12", note.position);
    f.text("color", note.color);
    f.integer("arrow", note.arrow, 0, 4);
}

template <class Fields>
void describe(Fields &f, ConnectionRecord &connection)
{
    f.integer("start_id", connection.start, INT_MIN);
    f.integer("end_id", connection.end, INT_MIN);
}

template <class Fields>
void describe(Fields &f, BatchValue &value)
{
    f.integer("row", value.row, 0);
    f.text("alias", value.alias);
    f.text("value", value.value);
}

template <class Fields>
void describe(Fields &f, BatchLogging &logging)
{
    f.flag("enabled", logging.enabled);
    f.text("path", logging.path);
    f.integer("mode", logging.mode, 0, 1);
}

/// The properties of `meta`, each an element of its own with the attribute `value`.
template <class Fields>
void describe(Fields &f, DocumentMeta &meta)
{
    f.integer("version", meta.version, 0);
    f.text("last_saved_by", meta.lastSavedBy);
    f.text("locale", meta.locale);
    f.textIfAny("id", meta.id);
    f.flag("snap_to_grid", meta.snapToGrid);
    f.text("notes", meta.notes);
    f.text("doc_path", meta.path);
    f.flag("auto_run_on", meta.autoRun);
}

} // namespace DocumentFields
