#ifndef CASES_H
#define CASES_H

#include <QtTest>

// A data-driven test over a static table: each row is a struct with the member `name`.
//
//     void tst_X::works_data() { addCases(cases); }
//     void tst_X::works() { const Case &c = currentCase(cases); ... }

template <typename Case, std::size_t count> void addCases(const Case (&cases)[count])
{
    QTest::addColumn<int>("index");
    for (std::size_t i = 0; i < count; ++i)
        QTest::newRow(cases[i].name) << int(i);
}

template <typename Case, std::size_t count> const Case &currentCase(const Case (&cases)[count])
{
    return cases[*static_cast<int *>(QTest::qData("index", QMetaType::Int))];
}

#endif
