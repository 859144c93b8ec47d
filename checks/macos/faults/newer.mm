// 'SMAppService' is only available on macOS 13.0 or newer
#import <ServiceManagement/ServiceManagement.h>

id Newer() { return [SMAppService mainAppService]; }
