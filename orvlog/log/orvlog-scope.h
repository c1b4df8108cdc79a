// Guards of scope: what each begins when it is made, it ends at the end of the block that it stands in. They hold
// nothing but their arguments, and a compiler leaves no trace of them but the calls of the writer.

#pragma once

#include "orvlog/log/orvlog-writer.h"

#include <string_view>

// An element without attributes, around what is written in the block.
struct ORVLOG_Element
{
    ORVLOG_Writer* const writer;
    const std::string_view name;

    [[nodiscard]] ORVLOG_Element(ORVLOG_Writer* element_writer, std::string_view element_name)
        : writer(element_writer), name(element_name)
    {
        orvlog_writer_enter_element(writer, name);
    }
    ~ORVLOG_Element()
    {
        orvlog_writer_leave_element(writer, name);
    }
    ORVLOG_Element(const ORVLOG_Element&) = delete;
    ORVLOG_Element& operator=(const ORVLOG_Element&) = delete;
};

// The content of an element whose tag has been begun and has its attributes: ends that tag, and closes the element.
struct ORVLOG_Content
{
    ORVLOG_Writer* const writer;
    const std::string_view name;

    [[nodiscard]] ORVLOG_Content(ORVLOG_Writer* element_writer, std::string_view element_name)
        : writer(element_writer), name(element_name)
    {
        orvlog_writer_enter(writer);
    }
    ~ORVLOG_Content()
    {
        orvlog_writer_leave_element(writer, name);
    }
    ORVLOG_Content(const ORVLOG_Content&) = delete;
    ORVLOG_Content& operator=(const ORVLOG_Content&) = delete;
};

// A member of an element: an argument of a call, or a record that another one holds.
struct ORVLOG_Member
{
    ORVLOG_Writer* const writer;
    const std::string_view element;
    const std::string_view member;

    [[nodiscard]] ORVLOG_Member(ORVLOG_Writer* member_writer, std::string_view owner, std::string_view name)
        : writer(member_writer), element(owner), member(name)
    {
        orvlog_writer_enter_member(writer, element, member);
    }
    ~ORVLOG_Member()
    {
        orvlog_writer_leave_member(writer, element, member);
    }
    ORVLOG_Member(const ORVLOG_Member&) = delete;
    ORVLOG_Member& operator=(const ORVLOG_Member&) = delete;
};

// Another stream, or none, in the place of the log's.
struct ORVLOG_Redirect
{
    ORVLOG_Writer* const writer;
    GIO_Stream* const former;

    [[nodiscard]] ORVLOG_Redirect(ORVLOG_Writer* redirected, GIO_Stream* stream)
        : writer(redirected), former(orvlog_writer_redirect(redirected, stream))
    {
    }
    ~ORVLOG_Redirect()
    {
        orvlog_writer_redirect(writer, former);
    }
    ORVLOG_Redirect(const ORVLOG_Redirect&) = delete;
    ORVLOG_Redirect& operator=(const ORVLOG_Redirect&) = delete;
};
