#ifndef SINGLETON_H
#define SINGLETON_H

#include <QObject>

/**
 * The process-wide object of class @p T, made by @p create when there is none: on the first call, which may
 * come from several threads at once, and after the object was destroyed. It is deleted at process exit if it
 * is still alive.
 *
 * Deliberate: every call connects `destroyed` once more. Do not make this a single connection.
 */
template <typename T> T *singleton(T *(*create)())
{
    struct Holder {
        T *object;
        ~Holder() { delete object; }
    };
    static Holder holder{create()};
    if (!holder.object)
        holder.object = create();
    // A successor may have been made while the remaining connections of its predecessor still fire.
    QObject::connect(holder.object, &QObject::destroyed, [](QObject *destroyed) {
        if (holder.object == destroyed)
            holder.object = nullptr;
    });
    return holder.object;
}

#endif
