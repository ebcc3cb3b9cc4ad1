// The shape of the table: how many methods, how names are matched, and that every row builds a
// wrapper whose argument names agree with its function.
#include "MethodTestSupport.h"

#include <QSet>

TEST(MethodTable, HasTheWholeSurfaceOnceEach) {
    const auto& names = TarvoRPCRequestHandler::method_names();
    EXPECT_EQ(names.size(), 485u);
    const QSet<QString> distinct(names.begin(), names.end());
    EXPECT_EQ(distinct.size(), static_cast<qsizetype>(names.size())) << "a name appears twice";
}

TEST(MethodTable, EveryNameBuildsAWrapperUnderEveryPrefix) {
    TarvoRPCRequestHandler handler;
    for (const QString& name : TarvoRPCRequestHandler::method_names()) {
        for (const QString& form : {name, "tarvo." + name, "a.b." + name}) {
            std::unique_ptr<RPCMethodWrapper> wrapper = handler.create_method(form);
            EXPECT_TRUE(wrapper) << form.toStdString();
        }
    }
}

TEST(MethodTable, MatchesTheLastSectionExactly) {
    TarvoRPCRequestHandler handler;
    for (const char* unknown : {"GET_VERSION", "Get_Version", "get_version.", "tarvo.", "",
                                "get_versio", "get_version ", "tarvo.get_version.x"}) {
        std::unique_ptr<RPCMethodWrapper> wrapper = handler.create_method(unknown);
        EXPECT_FALSE(wrapper) << '"' << unknown << '"';
    }
}
