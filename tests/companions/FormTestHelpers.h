#pragma once

#include "companions/DynaForm.h"
#include "companions/form/FieldEditor.h"
#include "support/SampleRepository.h"
#include "support/TestEnvironment.h"

#include <QString>
#include <QVariant>
#include <gtest/gtest.h>

namespace vx::test {

// Moves the form's cursor to the n-th field (1-based) of a column; false when there is none.
inline bool moveToField(VXDynaForm& form, const QString& column, int occurrence = 1) {
    int seen = 0;
    for (form.MoveFirstField(); !form.FieldEOF(); form.MoveNextField()) {
        if (form.FieldName().compare(column, Qt::CaseInsensitive) == 0 && ++seen == occurrence)
            return true;
    }
    return false;
}

inline void setField(VXDynaForm& form, const QString& column, const QVariant& value,
                     int occurrence = 1) {
    if (moveToField(form, column, occurrence))
        form.setFieldValue(value);
}

// A form companion of its own on the sample repository.
class FormOnSample : public ::testing::Test {
protected:
    TestEnvironment environment;
    SampleRepository sample;
    DynaForm form;

    void load(QString path) { ASSERT_TRUE(form.LoadForm(path)); }

    // The named input widget inside the editor of a field.
    template <class T>
    T* input(const QString& fieldObjectName, const char* inputName) {
        auto* editor = form.findChild<form::FieldEditor*>(fieldObjectName);
        return editor ? editor->findChild<T*>(QString::fromLatin1(inputName)) : nullptr;
    }
};

} // namespace vx::test
