import type { Request } from "./http";

interface Page<T> {
  items: T[];
  next?: string;
}

type Handler<T> = (req: Request) => Promise<Page<T>>;

enum Level { Low = 1, High = 2 }

declare const BUILD: string;

@Injectable()
export class PageService<T extends object> implements Service<T> {
  private readonly cache: Map<string, T> = new Map();
  static instances: number = 0;

  constructor(private readonly http: Http) {
    PageService.instances += 1;
  }

  async fetch(url: string): Promise<T> {
    const found = this.cache.get(url);
    if (!found) throw new Error(`missing ${url}`);
    return found as T;
  }

  abstract close(): void;
}

function isPage<T>(value: unknown): value is Page<T> {
  return typeof value === "object" && value !== null;
}

const handlers: Record<string, Handler<Page>> = {};
namespace Util { export const pi = 3.14; }
